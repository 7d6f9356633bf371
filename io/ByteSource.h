#pragma once

#include <cstddef>
#include <cstdint>

namespace mp4 {

/// Why a source delivered fewer bytes than it has. The end of a source is not a fault.
enum class SourceFault : std::uint8_t {
  kNone,
  kReadFailed,   ///< the system or a callback refused, or the source became shorter
  kBytesNeeded,  ///< the caller has not handed these bytes over yet
  kNoMemory,
};

/// The first fault of a source, kept for as long as the source lives.
struct SourceTrouble {
  SourceFault fault = SourceFault::kNone;
  std::uint64_t offset = 0;  ///< first byte that was not delivered
  std::uint64_t size = 0;    ///< bytes wanted from there on, at least 1
  int error = 0;             ///< errno, or what a callback answered; 0 when neither said anything
};

/// What a read of a source costs, which decides how far a cache reads ahead.
enum class ReadPace : std::uint8_t {
  kQuick,  ///< a system call: small pieces, growing while reading goes forward
  kSlow,   ///< a wait: few large pieces
  kExact,  ///< only what is wanted is there
};

/// Random access to bytes whose number is known: a file, memory, callbacks, ranges handed over.
/// One thread uses a source at a time.
class ByteSource {
 public:
  ByteSource() = default;
  ByteSource(const ByteSource&) = delete;
  ByteSource& operator=(const ByteSource&) = delete;
  virtual ~ByteSource();

  /// Size in bytes, fixed when the source was made.
  std::uint64_t Size() const { return size_; }

  /// Copies up to `n` bytes from `offset` on and returns how many: fewer at the end, or with
  /// Trouble() set. A later call may succeed where an earlier one failed; the trouble stays.
  std::size_t ReadAt(std::uint64_t offset, void* bytes, std::size_t n);

  /// The bytes themselves when all `n` lie in memory in one piece for as long as the source is
  /// not changed, else null. Never a fault.
  virtual const unsigned char* InMemory(std::uint64_t offset, std::size_t n) const {
    (void)offset, (void)n;
    return nullptr;
  }

  /// How much to read around what is wanted.
  virtual ReadPace Pace() const { return ReadPace::kQuick; }

  const SourceTrouble& Trouble() const { return trouble_; }
  bool Failed() const { return trouble_.fault != SourceFault::kNone; }
  /// Notes a fault; the first one is kept.
  void Report(const SourceTrouble& trouble);

 protected:
  void SetSize(std::uint64_t size) { size_ = size; }
  void ForgetTrouble() { trouble_ = {}; }

 private:
  /// Delivers up to `n` bytes, all of them below Size(); reports a fault when there are fewer.
  virtual std::size_t Deliver(std::uint64_t offset, unsigned char* bytes, std::size_t n) = 0;

  std::uint64_t size_ = 0;
  SourceTrouble trouble_;
};

}  // namespace mp4
