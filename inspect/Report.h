#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace mp4 {

/// What an inspection says. Unknown is never clear.
enum class ProtectionVerdict : std::uint8_t {
  kUndetermined,  ///< not everything that could say "protected" was seen; the reason says what
  kClear,         ///< every sample entry of every track and every item was seen, none is protected
  kProtected,     ///< the evidence says where
};

/// The 16 bytes of a key id or of a protection system's id.
using Id16 = std::array<std::uint8_t, 16>;

/// One protection scheme of an entry or item: a ProtectionSchemeInfoBox ("sinf").
struct ReportScheme {
  std::string type;  ///< four characters; empty without a SchemeTypeBox
  std::uint32_t version = 0;
  std::string uri;
  std::string originalFormat;  ///< empty without an OriginalFormatBox
  /// From the track encryption box, where there is one.
  std::optional<bool> defaultProtected;
  std::optional<Id16> defaultKeyId;
  std::uint8_t ivSize = 0;       ///< 0, 8 or 16
  std::uint8_t cryptBlocks = 0;  ///< pattern: so many blocks of 16 bytes encrypted,
  std::uint8_t skipBlocks = 0;   ///< then so many clear; 0 and 0 is no pattern
  std::vector<std::uint8_t> constantIv;
};

/// One sample entry.
struct ReportEntry {
  std::string format;
  std::string originalFormat;  ///< of the first scheme or restriction that names one
  bool isProtected = false;
  std::vector<ReportScheme> schemes;  ///< every "sinf" in file order
};

struct ReportTrack {
  std::uint32_t id = 0;  ///< 0 when unreadable
  std::string handler;   ///< four characters; empty when unreadable
  bool isProtected = false;
  std::vector<ReportEntry> entries;
};

/// One item (ISO/IEC 14496-12, 8.11), for example an image.
struct ReportItem {
  std::uint32_t id = 0;
  std::string type;  ///< four characters; empty for items of the first versions, which have none
  bool isProtected = false;
  std::string scheme;
};

/// One ProtectionSystemSpecificHeaderBox ("pssh" or its PIFF form).
struct ReportSystem {
  Id16 id{};
  std::string name;  ///< as registered; empty when unknown
  std::vector<Id16> keyIds;
  std::uint64_t payloadSize = 0;
  std::string boxPath;
};

/// Where it is said that something is protected.
struct Evidence {
  std::string boxPath;
  std::optional<std::uint64_t> offset;  ///< of the box's header; none inside a compressed movie
  std::optional<std::uint32_t> track;
  std::optional<std::uint32_t> item;
  std::string format;  ///< empty when the box is of no single entry
  std::string scheme;  ///< empty when none is named
  std::string text;    ///< one sentence
};

/// Something broken, missing or contradictory.
struct ReportProblem {
  std::string boxPath;
  std::optional<std::uint64_t> offset;  ///< none inside a compressed movie
  std::string text;                     ///< what is wrong, and by which rule
  bool mayHide = false;                 ///< protection could be where nobody could look
};

/// Bytes that a caller has to bring before the inspection can go on.
struct NeededRange {
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
};

/// The answer of an inspection: plain values, nothing borrowed.
struct Report {
  ProtectionVerdict verdict = ProtectionVerdict::kUndetermined;
  std::vector<std::string> schemes;  ///< unique, in order of first sight
  std::string reason;                ///< what keeps the verdict undetermined; else empty
  std::vector<ReportTrack> tracks;
  std::vector<ReportItem> items;
  std::vector<ReportSystem> systems;
  std::vector<Evidence> evidence;
  std::vector<ReportProblem> problems;
  std::vector<std::string> notes;  ///< what is easily mistaken for protection
  std::uint64_t fragments = 0;     ///< movie fragments looked at
  bool everything = false;         ///< whether every top-level box was looked at
  /// The fragment from which on nothing was looked at, because everything was not asked for.
  std::optional<std::uint64_t> stoppedAt;
  bool outOfMemory = false;           ///< memory was refused; nothing but the reason is there
  std::optional<NeededRange> needed;  ///< set when the source asked for more bytes
};

}  // namespace mp4
