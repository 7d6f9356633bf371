#pragma once

#include "io/Export.h"

/// The host's codec numbering. The few values that the library itself asks for are named where it
/// does (SoundDescription.cpp, BoxESDS.cpp); the others carry no names. 0 is no codec and ends a
/// table.
/// Unscoped, so that values compare with plain numbers.
enum CodecID : int {};

/// One row of a codec tag table. A FourCC tag has its first character in the least significant
/// byte; a WAVE format tag or an MPEG-4 object type is its plain value.
struct AVCodecTag {
  CodecID id;
  unsigned int tag;
};

/// The tables end with a row of id 0. Several rows may share a tag or an id: lookups take the first
/// match, so their order is part of the contract with the host.

/// QuickTime and ISO audio sample-entry formats.
extern MP4JUDGE_API const AVCodecTag codec_movaudio_tags[];
/// QuickTime and ISO visual sample-entry formats.
extern MP4JUDGE_API const AVCodecTag codec_movvideo_tags[];
/// RIFF/WAVE format tags; the last three rows are FourCCs.
extern MP4JUDGE_API const AVCodecTag codec_wav_tags[];
/// Object type indications of ISO/IEC 14496-1 (one byte).
extern MP4JUDGE_API const AVCodecTag ff_mp4_obj_type[];

/// Id of the first row with exactly this tag, else of the first row whose tag differs only in the
/// case of ASCII letters, else 0. A null table gives 0. Linear in the table.
MP4JUDGE_API CodecID codec_get_id(const AVCodecTag* table, unsigned int tag);

/// Tag of the first row with this id; 0 when there is none, and for id 0. A null table gives 0.
MP4JUDGE_API unsigned int codec_get_tag(const AVCodecTag* table, int id);

/// Nominal bits per coded sample of PCM-like codecs, 0 for every other codec.
MP4JUDGE_API int av_get_bits_per_sample(CodecID id);
