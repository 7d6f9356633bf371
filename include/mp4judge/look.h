/// @file
/// mp4judge/look.h: what stands in an ISO base media or QuickTime file: its boxes with their
/// fields, the movie that they describe, and where its media lies. C99 and C++ (which has look.hpp
/// beside it). Whether a file is protected is asked through mp4judge.h.
///
/// Ownership: the caller frees what an open function gives, once, with mp4judge_tree_free. A text
/// that is asked of a tree belongs to the tree and lives until the next text is asked of it, or
/// until it is freed; a path is used during the call only; memory, and what callbacks need, must
/// last as long as the tree. Threads: a tree is used by one thread at a time. Null: there is a tree
/// whatever happens, but null where memory is refused; all functions take a null tree as one that
/// could not be opened. Nothing throws or prints. What is listed is bounded, and so is the work,
/// whatever the file says.
#ifndef MP4JUDGE_LOOK_H
#define MP4JUDGE_LOOK_H

#include "mp4judge/mp4judge.h"

#ifdef __cplusplus
extern "C" {
#endif

/// A file that is looked at. Opening reads nothing yet.
typedef struct mp4judge_tree mp4judge_tree;

/// Opens a file; the path is handed to the system as mp4judge_inspect_path does. Null without
/// memory alone: what does not open has its error.
MP4JUDGE_API mp4judge_tree* mp4judge_tree_open_path(const char* path);
/// The same for memory. Null is a source without bytes.
MP4JUDGE_API mp4judge_tree* mp4judge_tree_open_memory(const void* bytes, size_t n);
/// The same for what two callbacks deliver, as mp4judge_inspect_callbacks takes them.
MP4JUDGE_API mp4judge_tree* mp4judge_tree_open_callbacks(mp4judge_read_at read_at,
                                                         mp4judge_size size, void* user);
/// Null is fine.
MP4JUDGE_API void mp4judge_tree_free(mp4judge_tree* tree);

/// What kept the file from being opened, or the last question from being answered as a whole: then
/// what was answered is true as far as it goes.
MP4JUDGE_API mp4judge_error mp4judge_tree_error(const mp4judge_tree* tree);
/// The errno that belongs to the error, or what a callback answered; 0 when there is none.
MP4JUDGE_API int mp4judge_tree_errno(const mp4judge_tree* tree);
/// Bytes of the file; 0 when it could not be opened.
MP4JUDGE_API uint64_t mp4judge_tree_file_size(const mp4judge_tree* tree);

/// What of a file's boxes is listed, and how.
typedef struct mp4judge_tree_options {
  size_t size;  ///< sizeof(mp4judge_tree_options), by which the library knows the members
  /// Levels that are listed, beginning with the boxes that the listing begins with; 0: all.
  int depth;
  /// Only boxes of this path, each with what is below it: types by '/', as paths of boxes are
  /// written. A type without an ordinal stands for any of them, "*" for any type. With a '/' in
  /// front the path begins at the top level, else anywhere: "trak[2]/tkhd", "/moov", "tenc". Null:
  /// the whole file.
  const char* path;
  /// The listing ends after so many boxes.
  uint64_t most_boxes;
  /// Not 0: JSON over several lines; 0: on one.
  int indented;
} mp4judge_tree_options;

/// What null options mean.
#define MP4JUDGE_TREE_OPTIONS_DEFAULT \
  { sizeof(mp4judge_tree_options), 0, NULL, 200000, 0 }

/// What the text of a field stands for.
typedef enum mp4judge_field_kind {
  MP4JUDGE_FIELD_TEXT = 0,    ///< bytes of the file, perhaps not UTF-8
  MP4JUDGE_FIELD_NUMBER = 1,  ///< a whole number, or one with a point
  MP4JUDGE_FIELD_BOOL = 2,    ///< "true" or "false"
  MP4JUDGE_FIELD_LIST = 3     ///< the first rows of a table
} mp4judge_field_kind;

/// One field of a box.
typedef struct mp4judge_field {
  const char* name;          ///< as the standard has it, in camel case
  mp4judge_field_kind kind;  ///< what `text` stands for
  const char* text;          ///< the value; of a list, its rows with ", " between them
  size_t row_count;          ///< of a list, else 0
  const char* const* rows;   ///< of a list: `row_count` texts
} mp4judge_field;

/// One box (ISO/IEC 14496-12, 4.2).
typedef struct mp4judge_box {
  const char* type;      ///< four characters, `\xHH` for those that are not printable ASCII
  const char* name;      ///< what its standard calls it; empty when unknown
  const char* standard;  ///< where that is; empty when unknown
  const char* path;      ///< "moov/trak[2]/mdia"
  /// 0 for a box whose path the listing begins with, 1 for its children, and so on.
  int level;
  /// 0 for the file; otherwise an inflated movie, whose bytes `offset` counts in.
  unsigned space;
  unsigned header_size;          ///< bytes in front of the payload: 8, 16, 24 or 32
  uint64_t offset;               ///< of the header's first byte, in `space`
  uint64_t size;                 ///< header included, as the box says
  uint64_t present;              ///< bytes of it that are there
  size_t field_count;            ///< fields that are known and there
  const mp4judge_field* fields;  ///< so many
  size_t problem_count;          ///< what is wrong with the box
  const char* const* problems;   ///< a sentence each
} mp4judge_box;

/// Sees one box; all pointers are valid during the call. Not 0 ends the walk. Must not throw.
typedef int (*mp4judge_tree_visit)(void* user, const mp4judge_box* box);

/// Shows the boxes in file order, parents before their children. Null options: the defaults. The
/// error is that of the tree, MP4JUDGE_ERROR_ARGUMENT without `visit`.
MP4JUDGE_API mp4judge_error mp4judge_tree_walk(mp4judge_tree* tree,
                                               const mp4judge_tree_options* options,
                                               mp4judge_tree_visit visit, void* user);
/// Whether the last walk, or JSON of a tree, came to the end of the file: 1, else 0.
MP4JUDGE_API int mp4judge_tree_complete(const mp4judge_tree* tree);

/// The same as JSON in UTF-8 (docs/tree.schema.json): {"size", "complete", "problems", "boxes"}, a
/// box as {"type", "name", "standard", "path", "offset", "header_size", "size", "fields",
/// "problems", "children"} where members without a value are left out. Bytes of texts that are not
/// UTF-8 stand as U+FFFD. Null without memory, and for a null tree.
MP4JUDGE_API const char* mp4judge_tree_json(mp4judge_tree* tree,
                                            const mp4judge_tree_options* options);

/// The movie as people describe it, as JSON (docs/info.schema.json): {"size", "verdict", "reason",
/// "schemes", "brand", "compatibleBrands", "hasMovie", "created", "seconds", "fragments", "tracks",
/// "metadata", "chapters", "cover", "problems"}. A track has its samples counted, its bit rate, its
/// frame rate as a fraction, its edits, and a description for each sample entry with codec, profile
/// and level. Members without a value are left out. `indented` as in the options. Reads the sample
/// tables and all fragments. Null without memory, and for a tree that could not be opened.
MP4JUDGE_API const char* mp4judge_info_json(mp4judge_tree* tree, int indented);

/// Where media lies in the file, and when it plays, as JSON (docs/layout.schema.json): {"size",
/// "seconds", "tracks"}, a track as {"id", "handler", "codec", "protected", "whole", "extents",
/// "bytes"}. An extent is [offset, end, bytes of samples]; small gaps are passed over where there
/// would be too many. "bytes" has those of the samples that begin in each of `parts` equal parts of
/// the time, 1 to 4096. Null without memory, and for a tree that could not be opened.
MP4JUDGE_API const char* mp4judge_layout_json(mp4judge_tree* tree, unsigned parts);

#ifdef __cplusplus
}
#endif

#endif
