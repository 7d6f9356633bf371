/// @file
/// mp4judge/samples.h: the exact sample index. Every sample of an ISO base media or QuickTime file,
/// where and when it really is (ISO/IEC 14496-12, -14, -15, 23001-7, QuickTime): from sample tables
/// and from movie fragments, with an initialization of its own where there is one. C99 and C++
/// (which has samples.hpp beside it). Whether a file is protected is asked through mp4judge.h.
///
/// Ownership: the caller frees what an open function gives, once, with mp4judge_movie_free, and a
/// cursor with mp4judge_cursor_free, before its movie. Texts, tracks and edits belong to the movie
/// and live as long as it. A path is used during the call only; memory, ranges and what callbacks
/// need must last as long as the movie. Threads: a movie and its cursors are used by one thread at
/// a time. Null: there is a movie whatever happens, but null where memory is refused; all functions
/// take a null movie or cursor as one without tracks and samples. Nothing throws or prints.
///
/// Opening reads what a list of tracks needs. The first question about a track's samples loads its
/// tables, and the fragments of all tracks; nothing is kept for each sample.
///
/// Tracks count from 0, in the order of their boxes; behind them stand those that only fragments
/// name. Sample numbers count from 1: samples of the movie box, then those of the fragments in file
/// order. Times count in units of the track's timescale.
#ifndef MP4JUDGE_SAMPLES_H
#define MP4JUDGE_SAMPLES_H

#include "mp4judge/mp4judge.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Opening --------------------------------------------------------------------------------- */

/// An open file. The caller frees it with mp4judge_movie_free.
typedef struct mp4judge_movie mp4judge_movie;

/// Opens a file. `init` is the path of the initialization that describes a media segment; null when
/// the file describes itself.
MP4JUDGE_API mp4judge_movie* mp4judge_movie_open_path(const char* path, const char* init);

/// The same for memory. A null `init` with size 0 is none.
MP4JUDGE_API mp4judge_movie* mp4judge_movie_open_memory(const void* bytes, size_t n,
                                                        const void* init, size_t init_size);

/// The same for what two callbacks deliver, as mp4judge_inspect_callbacks takes them.
MP4JUDGE_API mp4judge_movie* mp4judge_movie_open_callbacks(mp4judge_read_at read_at,
                                                           mp4judge_size size, void* user);

/// The same for ranges that the caller brings. When something is missing, what is listed is not
/// all, and mp4judge_movie_needs says what to bring: then the movie is freed and opened anew.
MP4JUDGE_API mp4judge_movie* mp4judge_movie_open_ranges(mp4judge_ranges* ranges);

/// Null is fine.
MP4JUDGE_API void mp4judge_movie_free(mp4judge_movie* movie);

/// MP4JUDGE_OK while everything could be read that was wanted so far. Otherwise what is listed may
/// not be all; after MP4JUDGE_ERROR_MEMORY nothing is listed any more.
MP4JUDGE_API mp4judge_error mp4judge_movie_error(const mp4judge_movie* movie);
/// The errno that belongs to the error, or what a callback answered; 0 when there is none.
MP4JUDGE_API int mp4judge_movie_errno(const mp4judge_movie* movie);
/// 1 when bytes have to be brought, with where they begin and how many they are; else 0, and both
/// are 0. Either pointer may be null.
MP4JUDGE_API int mp4judge_movie_needs(const mp4judge_movie* movie, uint64_t* offset, uint64_t* n);

/* ---- Tracks ---------------------------------------------------------------------------------- */

/// One edit (EditListBox, ISO/IEC 14496-12, 8.6.6).
typedef struct mp4judge_edit {
  uint64_t duration;   ///< in units of the movie's timescale
  int64_t media_time;  ///< in units of the track's timescale; -1 for an empty edit
  int32_t rate;        ///< 16.16; 0 for a dwell
} mp4judge_edit;

/// A track, with its first sample description. Formats are four characters, as in a report.
typedef struct mp4judge_movie_track {
  uint32_t id;                  ///< of the track header; 0 when unreadable
  int in_movie;                 ///< 0 when fragments alone name the track
  const char* handler;          ///< "vide", "soun", ...; null when not told
  const char* format;           ///< of the sample entry: "avc1", "encv"; null without one
  const char* codec;            ///< the format before protection: "avc1"; null without one
  int is_protected;             ///< whether some sample description is
  const char* scheme;           ///< "cenc", ...; null when none is named
  size_t description_count;     ///< sample descriptions
  uint32_t timescale;           ///< units a second; 0 when not told
  int64_t duration;             ///< of the media; -1 when not told
  const char* language;         ///< "eng", "en-US", "mac:0"; "" when not told
  uint32_t width;               ///< of video, in pixels
  uint32_t height;              ///< likewise
  uint32_t channels;            ///< of sound
  double sample_rate;           ///< of sound, frames a second
  const char* config_type;      ///< "avcC", "esds", ...; null without a decoder configuration
  const unsigned char* config;  ///< payload of that box
  size_t config_size;           ///< bytes of it; 0 without one
  size_t edit_count;            ///< edits, in the order they are shown
  const mp4judge_edit* edits;   ///< null when there are none
} mp4judge_movie_track;

/// Tracks known so far: those of the movie box, and once samples were asked for, those that
/// fragments name.
MP4JUDGE_API size_t mp4judge_movie_track_count(const mp4judge_movie* movie);
/// Null behind the last one.
MP4JUDGE_API const mp4judge_movie_track* mp4judge_movie_track_at(mp4judge_movie* movie,
                                                                 size_t track);
/// Units a second of the movie; 0 without a movie box.
MP4JUDGE_API uint32_t mp4judge_movie_timescale(const mp4judge_movie* movie);

/// What a track tells of its composition times (CompositionToDecodeBox, 8.6.1.4), in units of the
/// track's timescale. The caller's own.
typedef struct mp4judge_composition {
  int64_t shift;            ///< added to composition times, none is below its decode time
  int64_t least_offset;     ///< of a sample's composition time from its decode time
  int64_t greatest_offset;  ///< the same
  int64_t start;            ///< of the sample composed first
  int64_t end;              ///< of the sample composed last; 0 when not told
} mp4judge_composition;

/// 1 and what is told; 0 when nothing is.
MP4JUDGE_API int mp4judge_movie_composition(mp4judge_movie* movie, size_t track,
                                            mp4judge_composition* composition);

/* ---- Samples --------------------------------------------------------------------------------- */

/// One sample. The caller's own; its members stay as they are in all versions.
typedef struct mp4judge_sample {
  uint64_t number;           ///< from 1
  uint64_t offset;           ///< in the file
  int64_t decode_time;       ///< in units of the track's timescale
  int64_t composition_time;  ///< likewise; when it is shown, before edits
  uint32_t size;             ///< bytes
  uint32_t duration;         ///< in units of the track's timescale
  uint32_t description;      ///< sample description, from 1; 0 when nothing names one
  uint32_t fragment;         ///< movie fragment, from 1; 0 for the movie box
  int8_t sync;               ///< 1, 0; -1 when not told
  int8_t is_protected;       ///< 1, 0; -1 when it cannot be told
  /// is_leading, depends_on, is_depended_on, has_redundancy (SampleDependencyTypeBox), two bits
  /// each from the highest on.
  uint8_t depends;
  uint8_t outside;       ///< 1: not all of its bytes are in the file
  uint8_t elsewhere;     ///< 1: its data reference names another file
  uint8_t partial_sync;  ///< 1: in QuickTime's partial sync table
  uint8_t reserved[2];   ///< 0
} mp4judge_sample;

/// How many samples a track lists.
MP4JUDGE_API uint64_t mp4judge_movie_sample_count(mp4judge_movie* movie, size_t track);
/// 1 and the sample; 0 when there is no such sample.
MP4JUDGE_API int mp4judge_movie_sample(mp4judge_movie* movie, size_t track, uint64_t number,
                                       mp4judge_sample* sample);

/* Look-ups give a sample number, 0 when there is none. */

/// The last sample whose decode time is at or before `time`.
MP4JUDGE_API uint64_t mp4judge_movie_at_decode_time(mp4judge_movie* movie, size_t track,
                                                    int64_t time);
/// The sample with the greatest composition time at or before `time`.
MP4JUDGE_API uint64_t mp4judge_movie_at_composition_time(mp4judge_movie* movie, size_t track,
                                                         int64_t time);
/// The sample shown at a time of the presentation, through the edit list; none in an empty edit and
/// outside of all edits.
MP4JUDGE_API uint64_t mp4judge_movie_at_presentation_time(mp4judge_movie* movie, size_t track,
                                                          int64_t time);
/// The last sync sample up to `number`.
MP4JUDGE_API uint64_t mp4judge_movie_sync_before(mp4judge_movie* movie, size_t track,
                                                 uint64_t number);

/// The sync sample that may stand in for a sample (ShadowSyncSampleBox, 8.6.3).
MP4JUDGE_API uint64_t mp4judge_movie_shadow_of(mp4judge_movie* movie, size_t track,
                                               uint64_t number);

/// When a composition time is presented, through the edit list: 1 and the time, in units of the
/// track; 0 when no edit shows it.
MP4JUDGE_API int mp4judge_movie_presentation_time(mp4judge_movie* movie, size_t track,
                                                  int64_t composition_time, int64_t* time);

/// Copies up to `n` bytes of a sample and returns how many: fewer when the file ends before.
MP4JUDGE_API size_t mp4judge_movie_read(mp4judge_movie* movie, const mp4judge_sample* sample,
                                        void* bytes, size_t n);

/// Arrays of the caller's, each with room for all samples that are asked for. Null columns are left
/// out.
typedef struct mp4judge_columns {
  uint64_t* offsets;           ///< in the file
  uint32_t* sizes;             ///< bytes
  int64_t* decode_times;       ///< in units of the track's timescale
  int64_t* composition_times;  ///< likewise
  uint32_t* durations;         ///< likewise
  uint8_t* flags;              ///< of MP4JUDGE_SAMPLE_...
} mp4judge_columns;

#define MP4JUDGE_SAMPLE_SYNC 1                 ///< `sync` of the sample is 1
#define MP4JUDGE_SAMPLE_PROTECTED 2            ///< `is_protected` is 1
#define MP4JUDGE_SAMPLE_OUTSIDE 4              ///< `outside` is 1
#define MP4JUDGE_SAMPLE_ELSEWHERE 8            ///< `elsewhere` is 1
#define MP4JUDGE_SAMPLE_PARTIAL_SYNC 16        ///< `partial_sync` is 1
#define MP4JUDGE_SAMPLE_SYNC_UNKNOWN 32        ///< `sync` is -1
#define MP4JUDGE_SAMPLE_PROTECTION_UNKNOWN 64  ///< `is_protected` is -1

/// Fills columns with up to `most` samples from number `first` on. Returns how many there were.
MP4JUDGE_API size_t mp4judge_movie_columns(mp4judge_movie* movie, size_t track, uint64_t first,
                                           size_t most, const mp4judge_columns* columns);

/// What is wrong with the boxes that place samples, one sentence each: of a track, or with `track`
/// SIZE_MAX of the movie and its fragments. Loads the track.
MP4JUDGE_API size_t mp4judge_movie_problem_count(mp4judge_movie* movie, size_t track);
/// Problem `i`, from 0; null behind the last one.
MP4JUDGE_API const char* mp4judge_movie_problem(mp4judge_movie* movie, size_t track, size_t i);

/* ---- Fragments ------------------------------------------------------------------------------- */

/// How a movie fragment was found.
typedef enum mp4judge_found_by {
  MP4JUDGE_BY_SEGMENT_INDEX = 0,  ///< "sidx"
  MP4JUDGE_BY_RANDOM_ACCESS = 1,  ///< "mfra"
  MP4JUDGE_BY_HEADERS = 2         ///< the decode times of the fragments, read one after the other
} mp4judge_found_by;

/// A movie fragment. The caller's own; its members stay as they are in all versions.
typedef struct mp4judge_fragment {
  uint64_t offset;             ///< of its "moof" in the file
  int64_t decode_time;         ///< of the track's first sample in it; -1 when not told
  mp4judge_found_by found_by;  ///< what told where it is
} mp4judge_fragment;

/// The last fragment that begins at or before a composition time of the track: where a reader
/// begins. Reads an index, if there is one, and that fragment; no others. An index that points to
/// where no fragment begins is among the movie's problems, and the next way is taken. 1 and the
/// fragment; 0 without one.
MP4JUDGE_API int mp4judge_movie_fragment_at(mp4judge_movie* movie, size_t track, int64_t time,
                                            mp4judge_fragment* fragment);

/* ---- Walking --------------------------------------------------------------------------------- */

/// A walk over samples. The caller frees it with mp4judge_cursor_free, before its movie.
typedef struct mp4judge_cursor mp4judge_cursor;

/// The order in which the samples of all tracks come.
typedef enum mp4judge_order {
  MP4JUDGE_FILE_ORDER = 0,   ///< by offset
  MP4JUDGE_DECODE_ORDER = 1  ///< by decode time in seconds
} mp4judge_order;

/// A cursor in front of the first sample of a track. Null without memory, or such a track.
MP4JUDGE_API mp4judge_cursor* mp4judge_cursor_new(mp4judge_movie* movie, size_t track);
/// A cursor over all tracks together.
MP4JUDGE_API mp4judge_cursor* mp4judge_cursor_of_all(mp4judge_movie* movie, mp4judge_order order);
/// 1 and the next sample, with its track when that pointer is not null; 0 behind the last one.
MP4JUDGE_API int mp4judge_cursor_next(mp4judge_cursor* cursor, mp4judge_sample* sample,
                                      size_t* track);
/// For the cursor of one track: the next sample will be this one. 0 when there is none.
MP4JUDGE_API int mp4judge_cursor_seek(mp4judge_cursor* cursor, uint64_t number);
/// Null is fine.
MP4JUDGE_API void mp4judge_cursor_free(mp4judge_cursor* cursor);

#ifdef __cplusplus
}
#endif

#endif
