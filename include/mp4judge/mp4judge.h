/// @file
/// mp4judge: whether an ISO base media or QuickTime file is protected. The one header most programs
/// need; C99 and C++ (which may like mp4judge.hpp beside it better).
///
/// Every function may be called from several threads at once, on the same file too. None throws,
/// prints, ends the program or looks at the environment. Texts that a function returns end with a
/// zero and belong to the library, or to the handle they were asked of. What is said of a handle,
/// of null and of memory stands with each group below.
#ifndef MP4JUDGE_MP4JUDGE_H
#define MP4JUDGE_MP4JUDGE_H

#include <stddef.h>
#include <stdint.h>

/// Marks what the library exports.
#ifndef MP4JUDGE_API
#if defined(__GNUC__)
#define MP4JUDGE_API __attribute__((visibility("default")))
#else
#define MP4JUDGE_API
#endif
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Version --------------------------------------------------------------------------------- */

/// The version of this header: what breaks hosts,
#define MP4JUDGE_VERSION_MAJOR 1
/// what adds to the interface,
#define MP4JUDGE_VERSION_MINOR 0
/// and what does neither.
#define MP4JUDGE_VERSION_PATCH 0
/// All three in a number that grows with every version: 10203 is 1.2.3.
#define MP4JUDGE_VERSION_NUMBER \
  (MP4JUDGE_VERSION_MAJOR * 10000 + MP4JUDGE_VERSION_MINOR * 100 + MP4JUDGE_VERSION_PATCH)
/// The same as a text.
#define MP4JUDGE_VERSION_STRING "1.0.0"

/// The version of the library that is running, in the form "1.2.3".
MP4JUDGE_API const char* mp4judge_version(void);

/* ---- Errors ---------------------------------------------------------------------------------- */

/// What kept a call from doing all it was asked for. Numbers keep their meaning; later versions may
/// add some.
typedef enum mp4judge_error {
  MP4JUDGE_OK = 0,                ///< nothing did
  MP4JUDGE_ERROR_ARGUMENT = 1,    ///< null where something is needed
  MP4JUDGE_ERROR_MEMORY = 2,      ///< out of memory
  MP4JUDGE_ERROR_OPEN = 3,        ///< the system refused to open the file; its errno says why
  MP4JUDGE_ERROR_NOT_A_FILE = 4,  ///< a directory (EISDIR), pipe, socket or character device
  MP4JUDGE_ERROR_READ = 5,        ///< the system or a callback refused to read, or the file shrank
  MP4JUDGE_ERROR_NEEDS_BYTES = 6  ///< a range has to be brought; the report says which
} mp4judge_error;

/// What an error means, in a few English words; for a number that is none, too. Never null.
MP4JUDGE_API const char* mp4judge_error_text(mp4judge_error error);

/* ---- The inspector --------------------------------------------------------------------------- */

/// @name The inspector
/// Whether a file is protected as the standards have it (ISO/IEC 14496-12, 23001-7 and what
/// came before them), with the evidence. An inspection reads a few kilobytes, decrypts nothing
/// and loads no sample table. What it says stands in a report.
///
/// Ownership: the caller frees a report, once, with mp4judge_report_free. Whatever is reached
/// through a report lives until then, and does not change. Nothing is kept of path, memory,
/// callbacks or options once the call that got them has returned. Threads: one report may be
/// read by several threads at once. A mp4judge_ranges is used by one thread at a time.
/// Callbacks are called by the thread that inspects, during the call. Null: there is a report
/// whatever happens: where a file cannot be opened, a pointer is null or memory is refused, its
/// verdict is undetermined and it says why. Accessors take a null report as one that says
/// nothing, and answer null, 0 or "undetermined". Structures are read through pointers that the
/// library gives; later versions may add members at their ends.
/// @{

/// The answer of an inspection.
typedef enum mp4judge_verdict {
  MP4JUDGE_CLEAR = 0,      ///< every sample entry and every item was seen, none is protected
  MP4JUDGE_PROTECTED = 1,  ///< the evidence says where
  MP4JUDGE_UNDETERMINED =
      2  ///< something that could be protected was not seen; the reason says what
} mp4judge_verdict;

/// "clear", "protected" or "undetermined"; for any other number the last.
MP4JUDGE_API const char* mp4judge_verdict_name(mp4judge_verdict verdict);

/// What an inspection is asked for.
typedef struct mp4judge_options {
  size_t size;  ///< sizeof(mp4judge_options), by which the library knows what members there are
  /// Not 0: looks at all movie fragments. 0: of a file with fragments at the first, and at those
  /// near the beginning.
  int everything;
  /// Not 0: the host's judgement is made, too, and compared.
  int host_answer;
  /// What the report calls the source, for example a URL. Null: the path, or nothing.
  const char* name;
} mp4judge_options;

/// What null options mean: `mp4judge_options options = MP4JUDGE_OPTIONS_DEFAULT;`
#define MP4JUDGE_OPTIONS_DEFAULT \
  { sizeof(mp4judge_options), 0, 1, NULL }

/// What an inspection says. The caller frees it with mp4judge_report_free.
typedef struct mp4judge_report mp4judge_report;

/// Inspects a file. The path is handed to the system byte for byte: UTF-8 as a rule. Only regular
/// files and block devices are opened, and opening never waits.
MP4JUDGE_API mp4judge_report* mp4judge_inspect_path(const char* path,
                                                    const mp4judge_options* options);

/// Inspects `n` bytes of memory. Null is a source without bytes.
MP4JUDGE_API mp4judge_report* mp4judge_inspect_memory(const void* bytes, size_t n,
                                                      const mp4judge_options* options);

/// Reads up to `n` bytes at `offset` into `bytes`. Returns how many, at least 1; or a negative
/// number of the caller's for a failure. Asked again for the rest when it gave fewer. `offset` is
/// below the size, and `n` does not go past it.
typedef int64_t (*mp4judge_read_at)(void* user, uint64_t offset, void* bytes, size_t n);
/// The size in bytes, or a negative number of the caller's for a failure.
typedef int64_t (*mp4judge_size)(void* user);

/// Inspects what two callbacks deliver. A read is taken to be slow: there are few and large ones,
/// 68 KiB at first. The callbacks must not throw or jump out.
MP4JUDGE_API mp4judge_report* mp4judge_inspect_callbacks(mp4judge_read_at read_at,
                                                         mp4judge_size size, void* user,
                                                         const mp4judge_options* options);

/// The ranges of a source that the caller brings as they are asked for, without callback or thread:
///
///     mp4judge_ranges* ranges = mp4judge_ranges_new(size);
///     mp4judge_report* report = mp4judge_ranges_inspect(ranges, NULL);
///     while (mp4judge_report_needs(report, &offset, &n)) {
///       ... bring bytes offset to offset + n - 1, or what of them is at hand ...
///       mp4judge_ranges_add(ranges, offset, bytes, n);
///       mp4judge_report_free(report);
///       report = mp4judge_ranges_inspect(ranges, NULL);
///     }
typedef struct mp4judge_ranges mp4judge_ranges;

/// For a source of so many bytes. Null without memory. Freed by mp4judge_ranges_free.
MP4JUDGE_API mp4judge_ranges* mp4judge_ranges_new(uint64_t size);
/// Copies a range. Bytes past the size are left out; bytes brought before stay as they are.
MP4JUDGE_API mp4judge_error mp4judge_ranges_add(mp4judge_ranges* ranges, uint64_t offset,
                                                const void* bytes, size_t n);
/// Inspects what is there, from the beginning. While something is missing the report is
/// undetermined, its error is MP4JUDGE_ERROR_NEEDS_BYTES, and mp4judge_report_needs says what to
/// bring.
MP4JUDGE_API mp4judge_report* mp4judge_ranges_inspect(mp4judge_ranges* ranges,
                                                      const mp4judge_options* options);
/// Null is fine.
MP4JUDGE_API void mp4judge_ranges_free(mp4judge_ranges* ranges);

/// Null is fine.
MP4JUDGE_API void mp4judge_report_free(mp4judge_report* report);

/// @}

/* ---- What a report says ---------------------------------------------------------------------- */

/// @name What a report says
/// Formats, handlers, types and schemes are four characters; a byte that is not printable ASCII,
/// and each of `\ / [ ]`, stands as `\xHH`. Lists begin with 0; behind the last element is null.
/// @{

/// The verdict; undetermined for a null report.
MP4JUDGE_API mp4judge_verdict mp4judge_report_verdict(const mp4judge_report* report);
/// What keeps the verdict undetermined, in one sentence; else null.
MP4JUDGE_API const char* mp4judge_report_reason(const mp4judge_report* report);
/// The name that the source was given, or its path, byte for byte; null when it has none.
MP4JUDGE_API const char* mp4judge_report_path(const mp4judge_report* report);

/// MP4JUDGE_OK when everything could be read that was wanted. A verdict of "protected" may stand
/// beside an error: what was seen before it is enough.
MP4JUDGE_API mp4judge_error mp4judge_report_error(const mp4judge_report* report);
/// The errno that belongs to the error, or what a callback answered; 0 when there is none.
MP4JUDGE_API int mp4judge_report_errno(const mp4judge_report* report);
/// 1 when bytes have to be brought, with where they begin and how many they are; else 0, and both
/// are 0. Either pointer may be null.
MP4JUDGE_API int mp4judge_report_needs(const mp4judge_report* report, uint64_t* offset,
                                       uint64_t* n);

/// The protection schemes, each once, in the order they were met: "cenc", "cbcs", "itun" and so on.
/// May be empty although something is protected.
MP4JUDGE_API size_t mp4judge_report_scheme_count(const mp4judge_report* report);
/// Scheme `i` of them, from 0; null behind the last one.
MP4JUDGE_API const char* mp4judge_report_scheme(const mp4judge_report* report, size_t i);

/// One track of a report.
typedef struct mp4judge_track {
  uint32_t id;          ///< 0 when unreadable
  const char* handler;  ///< "soun", "vide", ...; null when unreadable
  int is_protected;     ///< 0 or 1
  size_t entry_count;   ///< sample entries
} mp4judge_track;

/// How many tracks the report has: at most 1000, though all are looked at.
MP4JUDGE_API size_t mp4judge_report_track_count(const mp4judge_report* report);
/// Track `i`, from 0, in the order of the file; null behind the last one.
MP4JUDGE_API const mp4judge_track* mp4judge_report_track(const mp4judge_report* report, size_t i);

/// One sample entry.
typedef struct mp4judge_entry {
  const char* format;           ///< "avc1", "encv", ...
  const char* original_format;  ///< before it was protected or restricted; null when not said
  int is_protected;             ///< 0 or 1
  size_t scheme_count;          ///< ProtectionSchemeInfoBoxes ("sinf")
} mp4judge_entry;

/// Sample entry `i` of track `track`, both from 0; null behind the last one.
MP4JUDGE_API const mp4judge_entry* mp4judge_report_entry(const mp4judge_report* report,
                                                         size_t track, size_t i);

/// One ProtectionSchemeInfoBox ("sinf") of a sample entry.
typedef struct mp4judge_scheme {
  const char* type;                     ///< null without a SchemeTypeBox ("schm")
  uint32_t version;                     ///< of the scheme; 0 without one
  const char* uri;                      ///< null when there is none
  const char* original_format;          ///< null without an OriginalFormatBox ("frma")
  int default_protected;                ///< 0 or 1; -1 without a TrackEncryptionBox ("tenc")
  const unsigned char* default_key_id;  ///< 16 bytes, or null
  unsigned iv_size;                     ///< 0, 8 or 16 bytes for each sample
  unsigned crypt_blocks;                ///< so many blocks of 16 bytes are encrypted,
  unsigned skip_blocks;                 ///< then so many are clear; 0 and 0 is no pattern
  const unsigned char* constant_iv;     ///< null when there is none
  size_t constant_iv_size;              ///< bytes of it, 8 or 16 as a rule; 0 without one
} mp4judge_scheme;

/// Scheme `i` of sample entry `entry` of track `track`, all from 0; null behind the last one.
MP4JUDGE_API const mp4judge_scheme* mp4judge_report_entry_scheme(const mp4judge_report* report,
                                                                 size_t track, size_t entry,
                                                                 size_t i);

/// One item (ISO/IEC 14496-12, 8.11), an image for example.
typedef struct mp4judge_item {
  uint32_t id;         ///< its number in the file
  const char* type;    ///< "hvc1", "grid", ...; null where items have no type
  int is_protected;    ///< 0 or 1
  const char* scheme;  ///< null when none is named
} mp4judge_item;

/// How many items the report has: at most 10000 a list, though all are looked at.
MP4JUDGE_API size_t mp4judge_report_item_count(const mp4judge_report* report);
/// Item `i`, from 0, by number; null behind the last one.
MP4JUDGE_API const mp4judge_item* mp4judge_report_item(const mp4judge_report* report, size_t i);

/// One ProtectionSystemSpecificHeaderBox ("pssh") or what stood for it in PIFF.
typedef struct mp4judge_system {
  const unsigned char* id;       ///< 16 bytes
  const char* name;              ///< as registered; null when unknown
  size_t key_id_count;           ///< key ids that the box lists
  const unsigned char* key_ids;  ///< 16 bytes each, one behind the other; null when there are none
  uint64_t payload_size;         ///< bytes of the system's own data
  const char* box_path;          ///< where it stands first: "moov/pssh"
} mp4judge_system;

/// How many protection systems the file names, each once, at most 128.
MP4JUDGE_API size_t mp4judge_report_system_count(const mp4judge_report* report);
/// System `i`, from 0, in the order they were met; null behind the last one.
MP4JUDGE_API const mp4judge_system* mp4judge_report_system(const mp4judge_report* report, size_t i);

/// The offset of what lies inside a compressed movie.
#define MP4JUDGE_NO_OFFSET UINT64_MAX

/// Where it is said that something is protected.
typedef struct mp4judge_evidence {
  const char* box_path;  ///< "moov/trak[2]/mdia/minf/stbl/stsd/enca[1]/sinf/schm"
  uint64_t offset;       ///< of the box's first byte, or MP4JUDGE_NO_OFFSET
  int64_t track;         ///< track id; -1 when it is of no single track
  int64_t item;          ///< item id; -1 when it is of no single item
  const char* format;    ///< null when it is of no single entry
  const char* scheme;    ///< null when none is named
  const char* text;      ///< one sentence
} mp4judge_evidence;

/// How many pieces of evidence there are, at most 1000.
MP4JUDGE_API size_t mp4judge_report_evidence_count(const mp4judge_report* report);
/// Piece `i`, from 0, in the order they were met; null behind the last one.
MP4JUDGE_API const mp4judge_evidence* mp4judge_report_evidence(const mp4judge_report* report,
                                                               size_t i);

/// Something broken, missing or contradictory.
typedef struct mp4judge_problem {
  const char* box_path;  ///< where it is; empty for the file itself
  uint64_t offset;       ///< or MP4JUDGE_NO_OFFSET
  const char* text;      ///< one sentence
  int may_hide;          ///< 1 when protection could be where nobody could look
} mp4judge_problem;

/// How many problems there are, at most 200.
MP4JUDGE_API size_t mp4judge_report_problem_count(const mp4judge_report* report);
/// Problem `i`, from 0, in the order they were met; null behind the last one.
MP4JUDGE_API const mp4judge_problem* mp4judge_report_problem(const mp4judge_report* report,
                                                             size_t i);

/// What is easily mistaken for protection, one sentence each.
MP4JUDGE_API size_t mp4judge_report_note_count(const mp4judge_report* report);
/// Note `i`, from 0; null behind the last one.
MP4JUDGE_API const char* mp4judge_report_note(const mp4judge_report* report, size_t i);

/// Movie fragments that were looked at.
MP4JUDGE_API uint64_t mp4judge_report_fragments(const mp4judge_report* report);
/// 1 when every top-level box was looked at, else 0.
MP4JUDGE_API int mp4judge_report_everything(const mp4judge_report* report);

/// The host's judgement of the same source: 1 protected, 0 clear or unreadable; -1 when it was not
/// asked for. Of a file whose fragments were not all looked at it is that of what was looked at,
/// unless that is 1: then the whole file was read for it.
MP4JUDGE_API int mp4judge_report_host_answer(const mp4judge_report* report);
/// Whether the host could read a movie: 1, 0; -1 when it was not asked for.
MP4JUDGE_API int mp4judge_report_host_reads(const mp4judge_report* report);
/// Why the host's answer is not the verdict, or why the host reads no movie. Each cause was tried
/// on this very file; where none proved to be one, the text says that it is not explained. Null
/// when the two agree.
MP4JUDGE_API const char* mp4judge_report_host_difference(const mp4judge_report* report);

/// All of the report as JSON (RFC 8259) in UTF-8, on one line without an end of line. Members and
/// their order are those of docs/report.schema.json. Belongs to the report; null without memory.
MP4JUDGE_API const char* mp4judge_report_json(const mp4judge_report* report);

/// @}

/* ---- The host's judgement -------------------------------------------------------------------- */

/// @name The host's judgement
/// A narrow question that hosts act upon: has any sound or video track ("soun", "vide") a first
/// sample entry of the format "drms"? No other scheme, track or entry counts, so "clear" here
/// means that and no more.
/// @{

/// What the host's judgement finds.
typedef enum mp4judge_host_answer {
  MP4JUDGE_HOST_CLEAR = 0,      ///< a movie was read and no such track is in it
  MP4JUDGE_HOST_PROTECTED = 1,  ///< a movie was read and such a track is in it
  MP4JUDGE_HOST_UNREADABLE = 2  ///< the file cannot be opened, or no movie can be read from it
} mp4judge_host_answer;

/// The host's judgement of a file. `path` is handed to the system byte for byte and uncut: UTF-8 as
/// a rule, but a name that is not valid UTF-8, or one of any length the system takes, opens just
/// as well. Only regular files and block devices are opened, and opening never waits. Null, and a
/// name that the system refuses, are unreadable.
MP4JUDGE_API mp4judge_host_answer mp4judge_host_judge(const char* path);

/// The same for a UTF-32 path (a 32-bit wchar_t), with two answers: 1 when protected, 0 when clear
/// or unreadable. Of a path longer than 2,047 bytes of UTF-8 only the whole characters that fit are
/// used, as hosts expect; mp4judge_host_judge cuts nothing.
MP4JUDGE_API int JudgeMP4HaveDRM(const wchar_t* path);

/// @}

#ifdef __cplusplus
}
#endif

#endif
