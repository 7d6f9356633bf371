#include "inspect/BoxNames.h"
#include "inspect/NamedTypes.h"
#include "io/FourCC.h"

namespace mp4 {

namespace {

constexpr auto kTags = SortedByType(std::to_array<NamedType>({
    {FourCC("\xA9"
            "nam"),
     "Title"},
    {FourCC("\xA9"
            "ART"),
     "Artist"},
    {FourCC("aART"), "Album Artist"},
    {FourCC("\xA9"
            "alb"),
     "Album"},
    {FourCC("\xA9"
            "grp"),
     "Grouping"},
    {FourCC("\xA9"
            "wrt"),
     "Composer"},
    {FourCC("\xA9"
            "cmt"),
     "Comment"},
    {FourCC("\xA9"
            "gen"),
     "Genre"},
    {FourCC("\xA9"
            "day"),
     "Release Date"},
    {FourCC("\xA9"
            "too"),
     "Encoding Tool"},
    {FourCC("\xA9"
            "enc"),
     "Encoded By"},
    {FourCC("\xA9"
            "lyr"),
     "Lyrics"},
    {FourCC("\xA9"
            "des"),
     "Description"},
    {FourCC("\xA9"
            "cpy"),
     "Copyright"},
    {FourCC("\xA9"
            "st3"),
     "Subtitle"},
    {FourCC("\xA9"
            "wrk"),
     "Work"},
    {FourCC("\xA9"
            "mvn"),
     "Movement"},
    {FourCC("\xA9"
            "mvi"),
     "Movement Number"},
    {FourCC("\xA9"
            "mvc"),
     "Movement Count"},
    {FourCC("\xA9"
            "nrt"),
     "Narrator"},
    {FourCC("\xA9"
            "pub"),
     "Publisher"},
    {FourCC("\xA9"
            "xyz"),
     "Location"},
    {FourCC("\xA9"
            "swr"),
     "Software"},
    {FourCC("\xA9"
            "mak"),
     "Maker"},
    {FourCC("\xA9"
            "mod"),
     "Model"},
    {FourCC("\xA9"
            "dir"),
     "Director"},
    {FourCC("\xA9"
            "aut"),
     "Author"},
    {FourCC("\xA9"
            "inf"),
     "Information"},
    {FourCC("cprt"), "Copyright"},
    {FourCC("covr"), "Cover"},
    {FourCC("trkn"), "Track Number"},
    {FourCC("disk"), "Disc Number"},
    {FourCC("gnre"), "Genre Number"},
    {FourCC("tmpo"), "Tempo"},
    {FourCC("cpil"), "Compilation"},
    {FourCC("pgap"), "Gapless Playback"},
    {FourCC("hdvd"), "High Definition"},
    {FourCC("stik"), "Media Kind"},
    {FourCC("rtng"), "Content Rating"},
    {FourCC("desc"), "Description"},
    {FourCC("ldes"), "Long Description"},
    {FourCC("sdes"), "Series Description"},
    {FourCC("tvnn"), "TV Network"},
    {FourCC("tvsh"), "TV Show"},
    {FourCC("tven"), "TV Episode ID"},
    {FourCC("tvsn"), "TV Season"},
    {FourCC("tves"), "TV Episode"},
    {FourCC("purl"), "Podcast URL"},
    {FourCC("pcst"), "Podcast"},
    {FourCC("catg"), "Category"},
    {FourCC("keyw"), "Keywords"},
    {FourCC("egid"), "Episode Global ID"},
    {FourCC("purd"), "Purchase Date"},
    {FourCC("apID"), "Purchaser Account"},
    {FourCC("akID"), "Account Kind"},
    {FourCC("ownr"), "Owner"},
    {FourCC("sfID"), "Store Front"},
    {FourCC("cnID"), "Catalogue ID"},
    {FourCC("atID"), "Artist ID"},
    {FourCC("plID"), "Album ID"},
    {FourCC("geID"), "Genre ID"},
    {FourCC("cmID"), "Composer ID"},
    {FourCC("xid "), "Vendor ID"},
    {FourCC("soal"), "Sort Album"},
    {FourCC("soaa"), "Sort Album Artist"},
    {FourCC("soar"), "Sort Artist"},
    {FourCC("sonm"), "Sort Title"},
    {FourCC("soco"), "Sort Composer"},
    {FourCC("sosn"), "Sort Show"},
    {FourCC("flvr"), "Flavour"},
    {FourCC("rate"), "Rating"},
    {FourCC("shwm"), "Show Movement"},
    {FourCC("----"), "Free-Form Item"},
}));

}  // namespace

std::string_view NameOfTag(std::uint32_t type) {
  const NamedType* found = FindType(kTags, type);
  return found != nullptr ? found->name : std::string_view();
}

}  // namespace mp4
