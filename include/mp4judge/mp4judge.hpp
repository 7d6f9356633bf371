/// @file
/// mp4judge/mp4judge.hpp: mp4judge/mp4judge.h for C++17, in this header alone. Nothing throws, but
/// for callables that are handed in; errors are values.
///
///     const auto report = mp4judge::Report::OfPath("film.mp4");
///     if (report.verdict() == mp4judge::Verdict::kProtected) ...
///
/// A Report owns its handle and moves only. Whatever it returns (texts, lists, elements) points
/// into it: valid until it is destroyed or assigned to, wherever it is moved. Several threads may
/// read one report; a Ranges is used by one thread at a time.
#ifndef MP4JUDGE_MP4JUDGE_HPP
#define MP4JUDGE_MP4JUDGE_HPP

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <iterator>
#include <memory>
#include <optional>
#include <string_view>
#include <type_traits>
#include <utility>

#include "mp4judge/mp4judge.h"

/// Everything of this library for C++.
namespace mp4judge {

/// The answer of an inspection.
enum class Verdict {
  kClear = MP4JUDGE_CLEAR,                ///< everything was seen, nothing is protected
  kProtected = MP4JUDGE_PROTECTED,        ///< the evidence says where
  kUndetermined = MP4JUDGE_UNDETERMINED,  ///< the reason says what was not seen
};
/// "clear", "protected" or "undetermined".
inline std::string_view NameOf(Verdict verdict) noexcept {
  return mp4judge_verdict_name(static_cast<mp4judge_verdict>(verdict));
}

/// Why a report may not say all; the values of mp4judge_error.
struct Error {
  mp4judge_error code = MP4JUDGE_OK;  ///< what it was
  int systemError = 0;                ///< errno, or what a callback answered

  /// Whether there is one.
  explicit operator bool() const noexcept { return code != MP4JUDGE_OK; }
  /// What it means, in a few English words.
  std::string_view text() const noexcept { return mp4judge_error_text(code); }
};

/// What an inspection is asked for.
struct Options {
  bool everything = false;     ///< looks at all movie fragments
  bool hostAnswer = true;      ///< asks the host's judgement, too
  const char* name = nullptr;  ///< what the report calls the source
};

/// The 16 bytes of a key id or of a protection system's id, in place.
class Id {
 public:
  static constexpr std::size_t kSize = 16;  ///< bytes of an id

  /// Of kSize bytes, which must last as long.
  explicit Id(const unsigned char* bytes) noexcept : bytes_(bytes) {}
  /// The first byte.
  const unsigned char* data() const noexcept { return bytes_; }
  /// For loops over the bytes.
  const unsigned char* begin() const noexcept { return bytes_; }
  /// For loops over the bytes.
  const unsigned char* end() const noexcept { return bytes_ + kSize; }
  /// Whether all bytes are the same.
  friend bool operator==(const Id& a, const Id& b) noexcept {
    return std::memcmp(a.bytes_, b.bytes_, kSize) == 0;
  }
  /// Whether some byte is another.
  friend bool operator!=(const Id& a, const Id& b) noexcept { return !(a == b); }

 private:
  const unsigned char* bytes_;
};

/// A list of values that are made as they are asked for: size(), [i] with i below it, and a range
/// for loops.
template <class Get>
class List {
 public:
  /// What the list holds.
  using value_type = std::invoke_result_t<const Get&, std::size_t>;

  /// Of `size` values, of which `get(i)` makes one.
  List(std::size_t size, Get get) noexcept : size_(size), get_(std::move(get)) {}

  /// An input iterator.
  class Iterator {
   public:
    /// @cond
    using iterator_category = std::input_iterator_tag;
    using value_type = typename List::value_type;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = value_type;

    Iterator(const List* list, std::size_t i) noexcept : list_(list), i_(i) {}
    value_type operator*() const noexcept { return (*list_)[i_]; }
    Iterator& operator++() noexcept {
      ++i_;
      return *this;
    }
    Iterator operator++(int) noexcept {
      const Iterator before = *this;
      ++i_;
      return before;
    }
    friend bool operator==(const Iterator& a, const Iterator& b) noexcept { return a.i_ == b.i_; }
    friend bool operator!=(const Iterator& a, const Iterator& b) noexcept { return a.i_ != b.i_; }
    /// @endcond

   private:
    const List* list_;
    std::size_t i_;
  };

  /// How many values there are.
  std::size_t size() const noexcept { return size_; }
  /// Whether there is none.
  bool empty() const noexcept { return size_ == 0; }
  /// Value `i`, from 0; there must be one.
  value_type operator[](std::size_t i) const noexcept { return get_(i); }
  /// For loops over the values.
  Iterator begin() const noexcept { return {this, 0}; }
  /// For loops over the values.
  Iterator end() const noexcept { return {this, size_}; }

 private:
  std::size_t size_;
  Get get_;
};

/// @cond
namespace internal {

/// Empty for null.
inline std::string_view Text(const char* text) noexcept {
  return text != nullptr ? std::string_view(text) : std::string_view();
}
inline std::optional<std::uint64_t> Offset(std::uint64_t offset) noexcept {
  return offset != MP4JUDGE_NO_OFFSET ? std::optional(offset) : std::nullopt;
}
inline std::optional<std::uint32_t> Number(std::int64_t number) noexcept {
  return number >= 0 ? std::optional(static_cast<std::uint32_t>(number)) : std::nullopt;
}
inline std::optional<bool> Flag(int flag) noexcept {
  return flag >= 0 ? std::optional(flag != 0) : std::nullopt;
}

}  // namespace internal
/// @endcond

/* Texts are empty where mp4judge.h has null. */

/// One ProtectionSchemeInfoBox ("sinf").
struct Scheme {
  std::string_view type;                 ///< "cenc", ...; empty without a SchemeTypeBox ("schm")
  std::uint32_t version;                 ///< of the scheme; 0 without one
  std::string_view uri;                  ///< empty when there is none
  std::string_view originalFormat;       ///< empty without an OriginalFormatBox ("frma")
  std::optional<bool> defaultProtected;  ///< none without a TrackEncryptionBox ("tenc")
  std::optional<Id> defaultKeyId;        ///< likewise
  unsigned ivSize;                       ///< 0, 8 or 16 bytes for each sample
  unsigned cryptBlocks;                  ///< so many blocks of 16 bytes are encrypted,
  unsigned skipBlocks;                   ///< then so many are clear; 0 and 0 is no pattern
  std::basic_string_view<unsigned char> constantIv;  ///< empty when there is none

  /// The values of the C structure.
  explicit Scheme(const mp4judge_scheme& from) noexcept
      : type(internal::Text(from.type)),
        version(from.version),
        uri(internal::Text(from.uri)),
        originalFormat(internal::Text(from.original_format)),
        defaultProtected(internal::Flag(from.default_protected)),
        ivSize(from.iv_size),
        cryptBlocks(from.crypt_blocks),
        skipBlocks(from.skip_blocks),
        constantIv(from.constant_iv, from.constant_iv_size) {
    if (from.default_key_id != nullptr) defaultKeyId.emplace(from.default_key_id);
  }
};

/// One sample entry.
class Entry {
 public:
  /// Entry `i` of a track, both from 0; there must be one.
  Entry(const mp4judge_report* report, std::size_t track, std::size_t i) noexcept
      : report_(report), track_(track), i_(i), entry_(*mp4judge_report_entry(report, track, i)) {}

  /// "avc1", "encv", ...
  std::string_view format() const noexcept { return internal::Text(entry_.format); }
  /// Before it was protected or restricted; empty when not said.
  std::string_view originalFormat() const noexcept {
    return internal::Text(entry_.original_format);
  }
  /// Whether it is for protected media.
  bool isProtected() const noexcept { return entry_.is_protected != 0; }
  /// A List of its schemes (Scheme).
  auto schemes() const noexcept {
    return List(entry_.scheme_count, [report = report_, track = track_, entry = i_](std::size_t i) {
      return Scheme(*mp4judge_report_entry_scheme(report, track, entry, i));
    });
  }

 private:
  const mp4judge_report* report_;
  std::size_t track_;
  std::size_t i_;
  const mp4judge_entry& entry_;
};

/// One track.
class Track {
 public:
  /// Track `i` of a report, from 0; there must be one.
  Track(const mp4judge_report* report, std::size_t i) noexcept
      : report_(report), i_(i), track_(*mp4judge_report_track(report, i)) {}

  /// 0 when unreadable.
  std::uint32_t id() const noexcept { return track_.id; }
  /// "soun", "vide", ...; empty when unreadable.
  std::string_view handler() const noexcept { return internal::Text(track_.handler); }
  /// Whether some sample entry is, or an object descriptor says so.
  bool isProtected() const noexcept { return track_.is_protected != 0; }
  /// A List of its sample entries (Entry).
  auto entries() const noexcept {
    return List(track_.entry_count,
                [report = report_, track = i_](std::size_t i) { return Entry(report, track, i); });
  }

 private:
  const mp4judge_report* report_;
  std::size_t i_;
  const mp4judge_track& track_;
};

/// One item, an image for example.
struct Item {
  std::uint32_t id;         ///< its number in the file
  std::string_view type;    ///< "hvc1", "grid", ...; empty where items have no type
  bool isProtected;         ///< itself, or what it is derived from
  std::string_view scheme;  ///< empty when none is named
};

/// One protection system that the file names ("pssh"), whether or not something is protected.
struct System {
  Id id;                        ///< of the system
  std::string_view name;        ///< as registered; empty when unknown
  const unsigned char* keyIds;  ///< keyIdCount of 16 bytes each
  std::size_t keyIdCount;       ///< key ids that the box lists
  std::uint64_t payloadSize;    ///< bytes of the system's own data
  std::string_view boxPath;     ///< where it stands first
};

/// Where it is said that something is protected.
struct Evidence {
  std::string_view boxPath;             ///< "moov/trak[2]/mdia/minf/stbl/stsd/enca[1]/sinf/schm"
  std::optional<std::uint64_t> offset;  ///< none inside a compressed movie
  std::optional<std::uint32_t> track;   ///< track id; none when it is of no single track
  std::optional<std::uint32_t> item;    ///< item id; none when it is of no single item
  std::string_view format;              ///< empty when it is of no single entry
  std::string_view scheme;              ///< empty when none is named
  std::string_view text;                ///< one sentence
};

/// Something broken, missing or contradictory.
struct Problem {
  std::string_view boxPath;             ///< where it is; empty for the file itself
  std::optional<std::uint64_t> offset;  ///< none inside a compressed movie
  std::string_view text;                ///< one sentence
  bool mayHide;                         ///< protection could be where nobody could look
};

/// Bytes that have to be brought.
struct Range {
  std::uint64_t offset;  ///< of the first one
  std::uint64_t size;    ///< how many
};

/// What an inspection says.
class Report {
 public:
  /// Inspects a file; the path is handed to the system byte for byte.
  static Report OfPath(const char* path, const Options& options = {}) noexcept {
    const mp4judge_options given = Given(options);
    return Report(mp4judge_inspect_path(path, &given));
  }
  /// Inspects `n` bytes of memory. Null is a source without bytes.
  static Report OfMemory(const void* bytes, std::size_t n, const Options& options = {}) noexcept {
    const mp4judge_options given = Given(options);
    return Report(mp4judge_inspect_memory(bytes, n, &given));
  }
  /// `readAt(offset, bytes, n)` returns how many bytes it delivered, at least 1, or a negative
  /// number; it is asked for bytes below `size` alone. What it throws ends the inspection and
  /// leaves this function.
  template <class ReadAt>
  static Report OfReader(std::uint64_t size, ReadAt&& readAt, const Options& options = {}) {
    Reader<ReadAt> reader{readAt, size, nullptr};
    const mp4judge_options given = Given(options);
    Report report(
        mp4judge_inspect_callbacks(Reader<ReadAt>::Read, Reader<ReadAt>::Size, &reader, &given));
    if (reader.thrown != nullptr) std::rethrow_exception(reader.thrown);
    return report;
  }
  /// Takes a handle over.
  explicit Report(mp4judge_report* handle) noexcept : handle_(handle) {}

  /// The verdict; undetermined without memory for a report.
  Verdict verdict() const noexcept {
    return static_cast<Verdict>(mp4judge_report_verdict(handle()));
  }
  /// What keeps the verdict undetermined, in one sentence; else empty.
  std::string_view reason() const noexcept {
    return internal::Text(mp4judge_report_reason(handle()));
  }
  /// The name that the source was given, or its path; empty when it has none.
  std::string_view path() const noexcept { return internal::Text(mp4judge_report_path(handle())); }
  /// What kept the source from being opened or read; a protected verdict may stand beside it.
  Error error() const noexcept {
    return {mp4judge_report_error(handle()), mp4judge_report_errno(handle())};
  }
  /// What has to be brought, of Ranges; else nothing.
  std::optional<Range> needs() const noexcept {
    Range range{};
    if (mp4judge_report_needs(handle(), &range.offset, &range.size) == 0) return std::nullopt;
    return range;
  }

  /// A List of the schemes' names, each once. May be empty although something is protected.
  auto schemes() const noexcept {
    return List(mp4judge_report_scheme_count(handle()), [report = handle()](std::size_t i) {
      return internal::Text(mp4judge_report_scheme(report, i));
    });
  }
  /// A List of the tracks (Track), in the order of the file.
  auto tracks() const noexcept {
    return List(mp4judge_report_track_count(handle()),
                [report = handle()](std::size_t i) { return Track(report, i); });
  }
  /// A List of the items (Item), by number.
  auto items() const noexcept {
    return List(mp4judge_report_item_count(handle()), [report = handle()](std::size_t i) {
      const mp4judge_item& item = *mp4judge_report_item(report, i);
      return Item{item.id, internal::Text(item.type), item.is_protected != 0,
                  internal::Text(item.scheme)};
    });
  }
  /// A List of the protection systems that the file names (System).
  auto systems() const noexcept {
    return List(mp4judge_report_system_count(handle()), [report = handle()](std::size_t i) {
      const mp4judge_system& system = *mp4judge_report_system(report, i);
      return System{Id(system.id),       internal::Text(system.name),
                    system.key_ids,      system.key_id_count,
                    system.payload_size, internal::Text(system.box_path)};
    });
  }
  /// A List of the evidence (Evidence), in the order it was met.
  auto evidence() const noexcept {
    return List(mp4judge_report_evidence_count(handle()), [report = handle()](std::size_t i) {
      const mp4judge_evidence& from = *mp4judge_report_evidence(report, i);
      return Evidence{internal::Text(from.box_path), internal::Offset(from.offset),
                      internal::Number(from.track),  internal::Number(from.item),
                      internal::Text(from.format),   internal::Text(from.scheme),
                      internal::Text(from.text)};
    });
  }
  /// A List of the problems (Problem), in the order they were met.
  auto problems() const noexcept {
    return List(mp4judge_report_problem_count(handle()), [report = handle()](std::size_t i) {
      const mp4judge_problem& from = *mp4judge_report_problem(report, i);
      return Problem{internal::Text(from.box_path), internal::Offset(from.offset),
                     internal::Text(from.text), from.may_hide != 0};
    });
  }
  /// A List of what is easily mistaken for protection, one sentence each.
  auto notes() const noexcept {
    return List(mp4judge_report_note_count(handle()), [report = handle()](std::size_t i) {
      return internal::Text(mp4judge_report_note(report, i));
    });
  }

  /// Movie fragments that were looked at.
  std::uint64_t fragments() const noexcept { return mp4judge_report_fragments(handle()); }
  /// Whether every top-level box was looked at.
  bool everything() const noexcept { return mp4judge_report_everything(handle()) != 0; }
  /// Whether the host says "protected"; nothing when it was not asked.
  std::optional<bool> hostAnswer() const noexcept {
    return internal::Flag(mp4judge_report_host_answer(handle()));
  }
  /// Whether the host could read a movie; nothing when it was not asked.
  std::optional<bool> hostReads() const noexcept {
    return internal::Flag(mp4judge_report_host_reads(handle()));
  }
  /// Why the host's answer is not the verdict, or why the host reads no movie; else empty.
  std::string_view hostDifference() const noexcept {
    return internal::Text(mp4judge_report_host_difference(handle()));
  }
  /// All of the report as JSON on one line. Empty without memory.
  std::string_view json() const noexcept { return internal::Text(mp4judge_report_json(handle())); }

  /// The handle, for C functions; it stays this report's.
  const mp4judge_report* handle() const noexcept { return handle_.get(); }

 private:
  struct Free {
    void operator()(mp4judge_report* report) const noexcept { mp4judge_report_free(report); }
  };
  template <class ReadAt>
  struct Reader {
    static std::int64_t Read(void* user, std::uint64_t offset, void* bytes,
                             std::size_t n) noexcept {
      auto* const reader = static_cast<Reader*>(user);
      if (reader->thrown != nullptr) return -1;
      try {
        return static_cast<std::int64_t>(reader->readAt(offset, bytes, n));
      } catch (...) {
        reader->thrown = std::current_exception();
        return -1;
      }
    }
    static std::int64_t Size(void* user) noexcept {
      return static_cast<std::int64_t>(static_cast<Reader*>(user)->size);
    }
    std::remove_reference_t<ReadAt>& readAt;
    std::uint64_t size;
    std::exception_ptr thrown;
  };
  static mp4judge_options Given(const Options& options) noexcept {
    return {sizeof(mp4judge_options), options.everything ? 1 : 0, options.hostAnswer ? 1 : 0,
            options.name};
  }
  friend class Ranges;

  std::unique_ptr<mp4judge_report, Free> handle_;
};

/// The ranges of a source that are brought as reports ask for them:
///
///     mp4judge::Ranges ranges(size);
///     auto report = ranges.Inspect();
///     while (const auto needed = report.needs()) {
///       ranges.Add(needed->offset, ..., needed->size);
///       report = ranges.Inspect();
///     }
class Ranges {
 public:
  /// Of a source of so many bytes.
  explicit Ranges(std::uint64_t size) noexcept : handle_(mp4judge_ranges_new(size)) {}

  /// Copies a range. An error without memory, also when there was none for the Ranges itself.
  Error Add(std::uint64_t offset, const void* bytes, std::size_t n) noexcept {
    if (handle_ == nullptr) return {MP4JUDGE_ERROR_MEMORY, 0};
    return {mp4judge_ranges_add(handle_.get(), offset, bytes, n), 0};
  }
  /// Inspects what is there, from the beginning.
  Report Inspect(const Options& options = {}) noexcept {
    const mp4judge_options given = Report::Given(options);
    return Report(mp4judge_ranges_inspect(handle_.get(), &given));
  }

 private:
  struct Free {
    void operator()(mp4judge_ranges* ranges) const noexcept { mp4judge_ranges_free(ranges); }
  };
  std::unique_ptr<mp4judge_ranges, Free> handle_;
};

}  // namespace mp4judge

#endif
