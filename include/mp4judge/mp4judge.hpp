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

namespace mp4judge {

enum class Verdict {
  kClear = MP4JUDGE_CLEAR,
  kProtected = MP4JUDGE_PROTECTED,
  kUndetermined = MP4JUDGE_UNDETERMINED,
};
inline std::string_view NameOf(Verdict verdict) noexcept {
  return mp4judge_verdict_name(static_cast<mp4judge_verdict>(verdict));
}

/// Why a report may not say all; the values of mp4judge_error.
struct Error {
  mp4judge_error code = MP4JUDGE_OK;
  int systemError = 0;  ///< errno, or what a callback answered

  explicit operator bool() const noexcept { return code != MP4JUDGE_OK; }
  std::string_view text() const noexcept { return mp4judge_error_text(code); }
};

struct Options {
  bool everything = false;     ///< looks at all movie fragments
  bool hostAnswer = true;      ///< asks the host's judgement, too
  const char* name = nullptr;  ///< what the report calls the source
};

/// The 16 bytes of a key id or of a protection system's id, in place.
class Id {
 public:
  static constexpr std::size_t kSize = 16;

  explicit Id(const unsigned char* bytes) noexcept : bytes_(bytes) {}
  const unsigned char* data() const noexcept { return bytes_; }
  const unsigned char* begin() const noexcept { return bytes_; }
  const unsigned char* end() const noexcept { return bytes_ + kSize; }
  friend bool operator==(const Id& a, const Id& b) noexcept {
    return std::memcmp(a.bytes_, b.bytes_, kSize) == 0;
  }
  friend bool operator!=(const Id& a, const Id& b) noexcept { return !(a == b); }

 private:
  const unsigned char* bytes_;
};

/// A list of values that are made as they are asked for: size(), [i] with i below it, and a range
/// for loops.
template <class Get>
class List {
 public:
  using value_type = std::invoke_result_t<const Get&, std::size_t>;

  List(std::size_t size, Get get) noexcept : size_(size), get_(std::move(get)) {}

  class Iterator {
   public:
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

   private:
    const List* list_;
    std::size_t i_;
  };

  std::size_t size() const noexcept { return size_; }
  bool empty() const noexcept { return size_ == 0; }
  value_type operator[](std::size_t i) const noexcept { return get_(i); }
  Iterator begin() const noexcept { return {this, 0}; }
  Iterator end() const noexcept { return {this, size_}; }

 private:
  std::size_t size_;
  Get get_;
};

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

/* Texts are empty where mp4judge.h has null. */

/// One ProtectionSchemeInfoBox ("sinf").
struct Scheme {
  std::string_view type;
  std::uint32_t version;
  std::string_view uri;
  std::string_view originalFormat;
  std::optional<bool> defaultProtected;
  std::optional<Id> defaultKeyId;
  unsigned ivSize, cryptBlocks, skipBlocks;
  std::basic_string_view<unsigned char> constantIv;

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
  Entry(const mp4judge_report* report, std::size_t track, std::size_t i) noexcept
      : report_(report), track_(track), i_(i), entry_(*mp4judge_report_entry(report, track, i)) {}

  std::string_view format() const noexcept { return internal::Text(entry_.format); }
  std::string_view originalFormat() const noexcept {
    return internal::Text(entry_.original_format);
  }
  bool isProtected() const noexcept { return entry_.is_protected != 0; }
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

class Track {
 public:
  Track(const mp4judge_report* report, std::size_t i) noexcept
      : report_(report), i_(i), track_(*mp4judge_report_track(report, i)) {}

  std::uint32_t id() const noexcept { return track_.id; }
  std::string_view handler() const noexcept { return internal::Text(track_.handler); }
  bool isProtected() const noexcept { return track_.is_protected != 0; }
  auto entries() const noexcept {
    return List(track_.entry_count,
                [report = report_, track = i_](std::size_t i) { return Entry(report, track, i); });
  }

 private:
  const mp4judge_report* report_;
  std::size_t i_;
  const mp4judge_track& track_;
};

struct Item {
  std::uint32_t id;
  std::string_view type;
  bool isProtected;
  std::string_view scheme;
};

struct System {
  Id id;
  std::string_view name;
  const unsigned char* keyIds;  ///< keyIdCount of 16 bytes each
  std::size_t keyIdCount;
  std::uint64_t payloadSize;
  std::string_view boxPath;
};

struct Evidence {
  std::string_view boxPath;
  std::optional<std::uint64_t> offset;  ///< none inside a compressed movie
  std::optional<std::uint32_t> track;
  std::optional<std::uint32_t> item;
  std::string_view format;
  std::string_view scheme;
  std::string_view text;
};

struct Problem {
  std::string_view boxPath;
  std::optional<std::uint64_t> offset;
  std::string_view text;
  bool mayHide;
};

/// Bytes that have to be brought.
struct Range {
  std::uint64_t offset;
  std::uint64_t size;
};

/// What an inspection says.
class Report {
 public:
  static Report OfPath(const char* path, const Options& options = {}) noexcept {
    const mp4judge_options given = Given(options);
    return Report(mp4judge_inspect_path(path, &given));
  }
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

  Verdict verdict() const noexcept {
    return static_cast<Verdict>(mp4judge_report_verdict(handle()));
  }
  std::string_view reason() const noexcept {
    return internal::Text(mp4judge_report_reason(handle()));
  }
  std::string_view path() const noexcept { return internal::Text(mp4judge_report_path(handle())); }
  Error error() const noexcept {
    return {mp4judge_report_error(handle()), mp4judge_report_errno(handle())};
  }
  std::optional<Range> needs() const noexcept {
    Range range{};
    if (mp4judge_report_needs(handle(), &range.offset, &range.size) == 0) return std::nullopt;
    return range;
  }

  auto schemes() const noexcept {
    return List(mp4judge_report_scheme_count(handle()), [report = handle()](std::size_t i) {
      return internal::Text(mp4judge_report_scheme(report, i));
    });
  }
  auto tracks() const noexcept {
    return List(mp4judge_report_track_count(handle()),
                [report = handle()](std::size_t i) { return Track(report, i); });
  }
  auto items() const noexcept {
    return List(mp4judge_report_item_count(handle()), [report = handle()](std::size_t i) {
      const mp4judge_item& item = *mp4judge_report_item(report, i);
      return Item{item.id, internal::Text(item.type), item.is_protected != 0,
                  internal::Text(item.scheme)};
    });
  }
  auto systems() const noexcept {
    return List(mp4judge_report_system_count(handle()), [report = handle()](std::size_t i) {
      const mp4judge_system& system = *mp4judge_report_system(report, i);
      return System{Id(system.id),       internal::Text(system.name),
                    system.key_ids,      system.key_id_count,
                    system.payload_size, internal::Text(system.box_path)};
    });
  }
  auto evidence() const noexcept {
    return List(mp4judge_report_evidence_count(handle()), [report = handle()](std::size_t i) {
      const mp4judge_evidence& from = *mp4judge_report_evidence(report, i);
      return Evidence{internal::Text(from.box_path), internal::Offset(from.offset),
                      internal::Number(from.track),  internal::Number(from.item),
                      internal::Text(from.format),   internal::Text(from.scheme),
                      internal::Text(from.text)};
    });
  }
  auto problems() const noexcept {
    return List(mp4judge_report_problem_count(handle()), [report = handle()](std::size_t i) {
      const mp4judge_problem& from = *mp4judge_report_problem(report, i);
      return Problem{internal::Text(from.box_path), internal::Offset(from.offset),
                     internal::Text(from.text), from.may_hide != 0};
    });
  }
  auto notes() const noexcept {
    return List(mp4judge_report_note_count(handle()), [report = handle()](std::size_t i) {
      return internal::Text(mp4judge_report_note(report, i));
    });
  }

  std::uint64_t fragments() const noexcept { return mp4judge_report_fragments(handle()); }
  bool everything() const noexcept { return mp4judge_report_everything(handle()) != 0; }
  /// Whether the host says "protected"; nothing when it was not asked.
  std::optional<bool> hostAnswer() const noexcept {
    return internal::Flag(mp4judge_report_host_answer(handle()));
  }
  std::optional<bool> hostReads() const noexcept {
    return internal::Flag(mp4judge_report_host_reads(handle()));
  }
  std::string_view hostDifference() const noexcept {
    return internal::Text(mp4judge_report_host_difference(handle()));
  }
  /// Empty without memory.
  std::string_view json() const noexcept { return internal::Text(mp4judge_report_json(handle())); }

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
  explicit Ranges(std::uint64_t size) noexcept : handle_(mp4judge_ranges_new(size)) {}

  /// Copies a range. An error without memory, also when there was none for the Ranges itself.
  Error Add(std::uint64_t offset, const void* bytes, std::size_t n) noexcept {
    if (handle_ == nullptr) return {MP4JUDGE_ERROR_MEMORY, 0};
    return {mp4judge_ranges_add(handle_.get(), offset, bytes, n), 0};
  }
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
