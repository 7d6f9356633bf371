#include "inspect/FirstBytes.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace mp4 {

namespace {

using std::string_view;
using namespace std::string_view_literals;

struct Row {
  std::size_t at;
  string_view bytes;
  const char* name;
};

// The more telling rows of one beginning stand first.
// clang-format off
constexpr Row kRows[] = {
    {0, "\x89PNG\r\n\x1a\n"sv, "a PNG image"},
    {0, "\xFF\xD8\xFF"sv, "a JPEG image"},
    {0, "GIF87a"sv, "a GIF image"},
    {0, "GIF89a"sv, "a GIF image"},
    {0, "RF64"sv, "a WAV file"},
    {0, "RIFX"sv, "a RIFF file"},
    {0, "riff\x2E\x91\xCF\x11"sv, "a Sony Wave64 file"},
    {0, "OggS"sv, "an Ogg file"},
    {0, "fLaC"sv, "a FLAC file"},
    {0, "FLV\x01"sv, "a Flash video"},
    {0, "\x30\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\x00\xAA\x00\x62\xCE\x6C"sv, "a Windows Media file"},
    {0, "\x00\x00\x01\xBA"sv, "an MPEG program stream"},
    {0, "\x00\x00\x01\xB3"sv, "an MPEG video stream"},
    {0, "\x00\x00\x00\x01\x67"sv, "a raw H.264 stream"},
    {0, "\x00\x00\x00\x01\x27"sv, "a raw H.264 stream"},
    {0, "\x00\x00\x00\x01\x40"sv, "a raw HEVC stream"},
    {0, "\x00\x00\x00\x01\x42"sv, "a raw HEVC stream"},
    {0, "ID3"sv, "an MP3 file"},
    {0, "\xFF\xF0"sv, "an AAC stream"},
    {0, "\xFF\xF1"sv, "an AAC stream"},
    {0, "\xFF\xF8"sv, "an AAC stream"},
    {0, "\xFF\xF9"sv, "an AAC stream"},
    {0, "ADIF"sv, "an AAC stream"},
    {0, "\x0B\x77"sv, "an AC-3 stream"},
    {0, "\x7F\xFE\x80\x01"sv, "a DTS stream"},
    {0, "\xFE\x7F\x01\x80"sv, "a DTS stream"},
    {0, "\x1F\xFF\xE8\x00"sv, "a DTS stream"},
    {0, "%PDF-"sv, "a PDF document"},
    {0, "%!PS"sv, "a PostScript document"},
    {0, "{\\rtf"sv, "an RTF document"},
    {0, "PK\x03\x04"sv, "a ZIP archive"},
    {0, "PK\x05\x06"sv, "a ZIP archive"},
    {0, "PK\x07\x08"sv, "a ZIP archive"},
    {0, "\x1F\x8B"sv, "a gzip archive"},
    {0, "BZh"sv, "a bzip2 archive"},
    {0, "7z\xBC\xAF\x27\x1C"sv, "a 7z archive"},
    {0, "Rar!\x1A\x07"sv, "a RAR archive"},
    {0, "\xFD" "7zXZ\x00"sv, "an xz archive"},
    {0, "\x28\xB5\x2F\xFD"sv, "a Zstandard archive"},
    {0, "\x04\x22\x4D\x18"sv, "an LZ4 archive"},
    {0, "MSCF"sv, "a CAB archive"},
    {0, "#EXTM3U"sv, "an HLS playlist; judge its segments"},
    {0, "WEBVTT"sv, "WebVTT subtitles"},
    {0, "\x7F" "ELF"sv, "a Linux program"},
    {0, "MZ"sv, "a Windows program"},
    {0, "\xCF\xFA\xED\xFE"sv, "a Mac program"},
    {0, "\xCE\xFA\xED\xFE"sv, "a Mac program"},
    {0, "\xCA\xFE\xBA\xBE"sv, "a Java class or a Mac program"},
    {0, "\x00" "asm"sv, "a WebAssembly program"},
    {0, "SQLite format 3\x00"sv, "an SQLite database"},
    {0, "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"sv, "an old Office document"},
    {0, "bplist00"sv, "an Apple property list"},
    {0, "d8:announce"sv, "a torrent"},
    {0, "\xFF\x0A"sv, "a JPEG XL image"},
    {4, "JXL \r\n\x87\n"sv, "a JPEG XL image"},
    {0, "\xFF\x4F\xFF\x51"sv, "a JPEG 2000 image"},
    {4, "jP  \r\n\x87\n"sv, "a JPEG 2000 image"},
    {0, "\x06\x0E\x2B\x34\x02\x05\x01\x01\x0D\x01\x02\x01\x01"sv, "an MXF file"},
    {0, "SDPX"sv, "a DPX image"},
    {0, "XPDS"sv, "a DPX image"},
    {0, "\x76\x2F\x31\x01"sv, "an OpenEXR image"},
    {0, "II\x2A\x00"sv, "a TIFF image"},
    {0, "MM\x00\x2A"sv, "a TIFF image"},
    {0, "II\x2B\x00"sv, "a BigTIFF image"},
    {0, "8BPS"sv, "a Photoshop image"},
    {0, "BM"sv, "a BMP image"},
    {0, "\x00\x00\x01\x00"sv, "an icon"},
    {0, ".RMF"sv, "a RealMedia file"},
    {0, ".ra\xFD"sv, "a RealAudio file"},
    {0, "#!AMR"sv, "an AMR file"},
    {0, "MThd"sv, "a MIDI file"},
    {0, ".snd"sv, "a Sun audio file"},
    {0, "caff"sv, "a Core Audio file"},
    {0, "DSD "sv, "a DSF file"},
    {0, "FRM8"sv, "a DSDIFF file"},
    {0, "wvpk"sv, "a WavPack file"},
    {0, "MAC "sv, "a Monkey's Audio file"},
    {0, "MP+"sv, "a Musepack file"},
    {0, "MPCK"sv, "a Musepack file"},
    {0, "TTA1"sv, "a True Audio file"},
    {0, "tBaK"sv, "a TAK file"},
    {0, "FWS"sv, "a Flash program"},
    {0, "CWS"sv, "a Flash program"},
    {0, "ZWS"sv, "a Flash program"},
    {0, "DKIF"sv, "an IVF file"},
    {0, "YUV4MPEG2"sv, "a YUV4MPEG file"},
    {0, "nut/multimedia"sv, "a NUT file"},
    {0, "BIK"sv, "a Bink video"},
    {0, "KB2"sv, "a Bink video"},
    {0, "SMK2"sv, "a Smacker video"},
    {0, "SMK4"sv, "a Smacker video"},
    {0, "THP\x00"sv, "a THP video"},
    {0, "\xB7\xD8\x00\x20\x37\x49\xDA\x11"sv, "a Windows Recorded TV file"},
    {0, "\x00\x00\x00\x00\x01\xBC"sv, "a GXF file"},
    {0, "Creative Voice File\x1A"sv, "a VOC file"},
    {0, ".SoX"sv, "a SoX file"},
    {128, "DICM"sv, "a DICOM image"},
    {0, "\x89HDF\r\n\x1a\n"sv, "an HDF5 file"},
    {0, "wOFF"sv, "a web font"},
    {0, "\xFF\xFE"sv, "text in UTF-16"},
    {0, "\xFE\xFF"sv, "text in UTF-16"},
};

/// Names of a container format's kinds.
constexpr Row kRiffRows[] = {
    {8, "WEBP"sv, "a WebP image"},
    {8, "AVI "sv, "an AVI file"},
    {8, "WAVE"sv, "a WAV file"},
    {8, "CDXA"sv, "a video CD file"},
    {8, "ACON"sv, "an animated cursor"},
};
constexpr Row kIffRows[] = {
    {8, "AIFF"sv, "an AIFF file"},
    {8, "AIFC"sv, "an AIFF file"},
    {8, "ILBM"sv, "an IFF image"},
    {8, "8SVX"sv, "an IFF sound"},
};
// clang-format on

bool Has(string_view all, std::size_t at, string_view bytes) {
  return at <= all.size() && all.substr(at, bytes.size()) == bytes;
}

template <std::size_t N>
const char* Find(const Row (&rows)[N], string_view all, const char* otherwise) {
  for (const Row& row : rows) {
    if (Has(all, row.at, row.bytes)) return row.name;
  }
  return otherwise;
}

bool IsTransportStream(string_view all) {
  const auto repeats = [&](std::size_t at, std::size_t stride) {
    return Has(all, at, "G"sv) && Has(all, at + stride, "G"sv) &&
           (all.size() <= at + 2 * stride || Has(all, at + 2 * stride, "G"sv));
  };
  return repeats(0, 188) || repeats(4, 192) || repeats(0, 204);
}

/// MPEG audio of layers I to III.
bool IsMpegAudio(string_view all) {
  if (all.size() < 4 || all[0] != '\xFF') return false;
  const auto second = static_cast<unsigned char>(all[1]);
  const auto third = static_cast<unsigned char>(all[2]);
  return (second & 0xE0) == 0xE0 && (second & 6) != 0 && (second & 0x18) != 8 &&
         (third & 0xF0) != 0xF0 && (third & 0x0C) != 0x0C;
}

bool IsPrintable(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return (byte >= 0x20 && byte < 0x7F) || (byte >= 9 && byte <= 13);
}

const char* NameOfText(string_view all) {
  if (Has(all, 0, "\xEF\xBB\xBF"sv)) all.remove_prefix(3);
  const auto start = std::find_if(all.begin(), all.end(), [](char c) { return c > ' ' || c < 0; });
  all.remove_prefix(static_cast<std::size_t>(start - all.begin()));
  char lower[16];
  const std::size_t n = std::min(all.size(), sizeof lower);
  std::transform(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(n), lower,
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  const string_view head(lower, n);
  if (Has(head, 0, "<!doctype"sv) || Has(head, 0, "<html"sv))
    return "an HTML page, perhaps a server's error message";
  if (Has(head, 0, "<?xml"sv) || Has(head, 0, "<mpd"sv)) return "XML, perhaps a DASH manifest";
  if (all.size() < 8 || !std::all_of(all.begin(), all.end(), IsPrintable)) return nullptr;
  return all[0] == '{' || all[0] == '[' ? "JSON" : "text";
}

}  // namespace

const char* NameOfFirstBytes(const unsigned char* bytes, std::size_t n) {
  const string_view all(reinterpret_cast<const char*>(bytes), std::min(n, kFirstBytes));
  if (Has(all, 0, "RIFF"sv)) return Find(kRiffRows, all, "a RIFF file");
  if (Has(all, 0, "FORM"sv)) return Find(kIffRows, all, "an IFF file");
  if (Has(all, 0, "\x1A\x45\xDF\xA3"sv))
    return all.find("webm"sv) != string_view::npos ? "a WebM file" : "a Matroska file";
  if (const char* name = Find(kRows, all, nullptr)) return name;
  if (IsTransportStream(all)) return "an MPEG transport stream";
  if (IsMpegAudio(all)) return "an MP3 file";
  if (all.size() >= 16 && std::all_of(all.begin(), all.end(), [](char c) { return c == 0; }))
    return "zeros, perhaps an empty download";
  return NameOfText(all);
}

}  // namespace mp4
