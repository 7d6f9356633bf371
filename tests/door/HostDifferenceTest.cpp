#include <gtest/gtest.h>

#include "door/HostDifference.h"
#include "tests/door/ReportFixtures.h"

using namespace reports;
using fixture::Ftyp;

namespace {

std::string Difference(const Bytes& bytes) {
  return Text(mp4judge_report_host_difference(OfMemory(bytes).get()));
}

const std::string kCounts =
    "the host counts \"drms\" as the first format of a sound or video track, no more: ";
const std::string kReadsNone = "the host reads no movie: ";

/// "stsd" with these entries.
Bytes Entries(const std::vector<Bytes>& entries) {
  Bytes payload = Bytes().Be32(static_cast<std::uint32_t>(entries.size()));
  for (const Bytes& entry : entries) payload.Append(entry);
  return FullBox("stsd", 0, 0, payload);
}

/// A movie of one track made of parts that a test may leave out or put in another order.
Bytes MovieOf(const Bytes& trackChildren, const Bytes& more = {}) {
  return Ftyp("isom") + Box("moov", fixture::Mvhd(1000, 400) + Box("trak", trackChildren) + more);
}
Bytes Media(const Bytes& stsd, const char* handler = "soun") {
  const Bytes information = Box("minf", fixture::Smhd() + fixture::Dinf() + Box("stbl", stsd));
  return Box("mdia", fixture::Mdhd() + fixture::Hdlr(handler) + information);
}

/// An edit list of one entry in its 64-bit form: "edts" 44, "elst" 36.
Bytes WideEdits() {
  return Box("edts", FullBox("elst", 1, 0, Bytes().Be32(1).Be64(400).Be64(0).Be32(0x10000)));
}
Bytes WideEditsTrack(const char* format, std::uint32_t id) {
  const fixture::Track track{.id = id, .format = format, .handler = "soun"};
  return Box("trak", fixture::Tkhd(id) + WideEdits() + fixture::Mdia(track));
}

}  // namespace

TEST(HostDifference, ThereIsNoneWhereTheTwoAgree) {
  EXPECT_EQ(Difference(ClearFile()), "");
  EXPECT_EQ(Difference(FileWith({Song("drms")})), "");
  // Undetermined, and clear for the host: nobody says "protected".
  EXPECT_EQ(Difference(ClearFile() + Box("moof", Bytes().Fill(7))), "");
}

TEST(HostDifference, NamesAFormatThatIsNotDrms) {
  EXPECT_EQ(Difference(CencFile()), kCounts + "track 1: the format \"enca\" is not \"drms\"");
}

TEST(HostDifference, NamesALaterSampleEntry) {
  const Bytes clear = fixture::AudioEntry("mp4a");
  const Bytes two = Entries({clear, fixture::AudioEntry("drms")});
  EXPECT_EQ(Difference(MovieOf(fixture::Tkhd(1) + Media(two))),
            kCounts + "track 1: the protected sample entry is the second, the first is \"mp4a\"");
  const Bytes three = Entries({clear, clear, fixture::AudioEntry("enca", CencInfo())});
  EXPECT_EQ(Difference(MovieOf(fixture::Tkhd(1) + Media(three))),
            kCounts + "track 1: the protected sample entry is the third, the first is \"mp4a\"");
}

TEST(HostDifference, NamesAHandlerThatTheHostPassesOver) {
  const Bytes drms = Entries({fixture::AudioEntry("drms")});
  EXPECT_EQ(Difference(MovieOf(fixture::Tkhd(7) + Media(drms, "sbtl"))).substr(kCounts.size()),
            "track 7: its handler \"sbtl\" is neither sound nor video");
}

TEST(HostDifference, NamesEveryTrackOnce) {
  fixture::Track first = Song("enca", CencInfo());
  fixture::Track second = Song("encv", CencInfo());
  second.id = 2;
  EXPECT_EQ(Difference(FileWith({first, first, second})).substr(kCounts.size()),
            "track 1: the format \"enca\" is not \"drms\"; "
            "track 2: the format \"encv\" is not \"drms\"");
}

TEST(HostDifference, NamesAHandlerBehindTheEntries) {
  const Bytes drms = Entries({fixture::AudioEntry("drms")});
  const Bytes information = Box("minf", fixture::Smhd() + fixture::Dinf() + Box("stbl", drms));
  const Bytes media = Box("mdia", fixture::Mdhd() + information + fixture::Hdlr("soun"));
  EXPECT_EQ(Difference(MovieOf(fixture::Tkhd(1) + media)),
            kCounts + "a handler box stands behind the sample entries");
}

TEST(HostDifference, NamesATrackThatTakesTheIdOfAnother) {
  // The host gives the second track's format to the first record of that ID.
  const Bytes bytes = FileWith({Song("drms"), Song("mp4a")});
  const Report report = OfMemory(bytes);
  EXPECT_EQ(mp4judge_report_verdict(report.get()), MP4JUDGE_PROTECTED);
  EXPECT_EQ(mp4judge_report_host_answer(report.get()), 0);
  const std::string why = Difference(bytes);
  EXPECT_NE(
      why.find("is replaced by a \"stsd\" in \"stbl\" (moov/trak[2]/mdia/minf/stbl/stsd, byte "),
      std::string::npos)
      << why;
}

TEST(HostDifference, NamesHowAFileBegins) {
  EXPECT_EQ(Difference(Box("styp", Bytes().Fill(12))),
            kReadsNone + "it begins with \"styp\", not with \"ftyp\" or a box of a movie");
  EXPECT_EQ(Difference(Bytes().Fill(19, 'a')), kReadsNone + "the file is shorter than 20 bytes");
  EXPECT_EQ(Difference(Bytes().Fill(20, 'a')),
            kReadsNone + "it begins with \"aaaa\", not with \"ftyp\" or a box of a movie");
  EXPECT_EQ(Difference({}), kReadsNone + "the file is shorter than 20 bytes");
}

TEST(HostDifference, NamesAMissingMovieBox) {
  EXPECT_EQ(Difference(Ftyp("isom") + Box("free")),
            kReadsNone + "there is no movie box at the top level");
}

TEST(HostDifference, NamesPartsThatTheHostWants) {
  const Bytes header = fixture::Mvhd();
  const Bytes track = fixture::Trak(Song("mp4a"));
  EXPECT_EQ(Difference(Ftyp("isom") + Box("moov", track)),
            kReadsNone + "there is no \"mvhd\" in moov");
  EXPECT_EQ(Difference(Ftyp("isom") + Box("moov", header)),
            kReadsNone + "there is no \"trak\" in moov");
  EXPECT_EQ(Difference(MovieOf(fixture::Tkhd(1))),
            kReadsNone + "there is no \"mdia\" in moov/trak[1]");
  EXPECT_EQ(Difference(MovieOf(fixture::Tkhd(1) + Box("mdia", fixture::Mdhd()))),
            kReadsNone + "there is no \"hdlr\" in moov/trak[1]/mdia");
}

TEST(HostDifference, NamesAnEditListInItsWideForm) {
  const Bytes one = Ftyp("isom") + Box("moov", fixture::Mvhd() + WideEditsTrack("mp4a", 1));
  // "ftyp" 20, "moov" 8, "mvhd" 108, "trak" 8, "tkhd" 92.
  EXPECT_EQ(Difference(one),
            kReadsNone +
                "its reader fails over an edit list in 64-bit form (moov/trak[1]/edts, byte 236); "
                "without that it reads a movie");
  // The same in every track, as a writer makes it: no single box would help.
  const Bytes two = Ftyp("isom") + Box("moov", fixture::Mvhd() + WideEditsTrack("mp4a", 1) +
                                                   WideEditsTrack("drms", 2));
  EXPECT_NE(Difference(two).find("64-bit form (moov/trak[1]/edts, byte 236, and 1 more)"),
            std::string::npos)
      << Difference(two);
}

TEST(HostDifference, NamesABoxThatTheHostEnters) {
  const Bytes level = Box("trep", Bytes().Be32(0).Be32(1).Fill(8, 0xFF));
  // The header of the track box is then read from inside the "trep".
  const std::string why =
      Difference(FileWith({}, Box("mvex", level) + fixture::Trak(Song("mp4a"))));
  EXPECT_NE(why.find("its reader fails over a \"trep\" in \"mvex\", which it enters"),
            std::string::npos)
      << why;
}

TEST(HostDifference, NamesAWideSizeBelowTheTopLevel) {
  const Bytes track = fixture::Trak(Song("mp4a"));
  const Bytes wide = Bytes().Be32(1).Text("udta").Be64(16 + 4).Be32(0xFFFFFFFF);
  const std::string why = Difference(FileWith({}, wide + track));
  EXPECT_NE(why.find("a 64-bit size below the top level (moov/udta"), std::string::npos) << why;
}

TEST(HostDifference, PlacesLieInTheFileAlsoBehindMediaData) {
  const Bytes movie = fixture::Mvhd() + WideEditsTrack("mp4a", 1);
  const Bytes bytes = Ftyp("isom") + Box("mdat", Bytes().Fill(9992)) + Box("moov", movie);
  EXPECT_NE(Difference(bytes).find("moov/trak[1]/edts, byte 10,236)"), std::string::npos)
      << Difference(bytes);
}

TEST(HostDifference, WhereOnlyTheHostSaysProtectedTheBytesAreNamed) {
  // Counts no entry, yet holds one, which the host reads whatever the count.
  const Bytes stsd = FullBox("stsd", 0, 0, Bytes().Be32(0) + fixture::AudioEntry("drms"));
  const Bytes bytes = MovieOf(fixture::Tkhd(1) + Media(stsd));
  const Report report = OfMemory(bytes);
  EXPECT_EQ(mp4judge_report_host_answer(report.get()), 1);
  EXPECT_NE(mp4judge_report_verdict(report.get()), MP4JUDGE_CLEAR);
}

TEST(HostDifference, WhatOnlyTheHostInflatesIsNamed) {
  // Its "cmvd" is longer than the "cmov" that holds it; the host does not mind.
  Bytes bytes = Box("moov", fixture::Cmov(fixture::Moov({Song("drms")})));
  bytes.PutBe32(8, 8 + 12 + 12);
  const Report report = OfMemory(bytes);
  EXPECT_EQ(mp4judge_report_host_answer(report.get()), 1);
  EXPECT_EQ(mp4judge_report_verdict(report.get()), MP4JUDGE_UNDETERMINED);
  EXPECT_EQ(Difference(bytes),
            "the host says \"protected\": it finds \"drms\" in what it inflates of a \"cmov\" in "
            "\"moov\" (moov/cmov, byte 8)");
}

TEST(HostDifference, WhatTheHostReadsBehindTheEndOfABoxIsNamed) {
  // The movie box ends 2 bytes behind its header; the host reads on.
  Bytes bytes = Box("moov", fixture::Cmov(fixture::Moov({Song("drms")})));
  bytes.PutBe32(0, 10);
  EXPECT_EQ(mp4judge_report_host_answer(OfMemory(bytes).get()), 1);
  EXPECT_EQ(Difference(bytes),
            "the host says \"protected\": it finds \"drms\" in what it reads of the box \"moov\" "
            "(moov, byte 0)");
}

TEST(HostDifference, AFileTooLargeToTryIsNotExplained) {
  const Bytes tables = Box("free", Bytes().Fill(9 << 20));
  const Bytes bytes =
      Ftyp("isom") + Box("moov", fixture::Mvhd() + WideEditsTrack("mp4a", 1) + tables);
  EXPECT_EQ(Difference(bytes), kReadsNone + "not explained");
}
