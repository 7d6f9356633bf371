#pragma once

class Mp4Context;

namespace mp4 {

/// What a file is found to be.
enum class HostVerdict {
  kClear,
  kProtected,   ///< a "soun" or "vide" track has the format "drms"
  kUnreadable,  ///< no movie box could be read
};

/// Judges a file by its UTF-32 path without loading its sample tables: the same answer as a full
/// opening, at a cost that does not grow with the length of the movie.
HostVerdict JudgeFile(const wchar_t* path);

/// Whether any audio or video track of a context is protected; false for null.
bool HasProtectedTrack(Mp4Context* context);

}  // namespace mp4
