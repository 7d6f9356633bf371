#pragma once

#include <cstdint>

#include "tests/Bytes.h"
#include "tests/MovieFixtures.h"

/// Movies whose cost should grow with `n` and no faster, whatever their tables look like.
namespace complexity {

struct Movie {
  Bytes head;       ///< up to the end of the movie box
  Bytes fragments;  ///< behind it, "moof" after "moof"
  std::uint32_t samples = 0;
};

// Both tracks hold n samples.
Movie Sane(std::uint32_t n);             ///< as a muxer writes it
Movie Alternating(std::uint32_t n);      ///< one time-to-sample entry a sample
Movie ChunkASample(std::uint32_t n);     ///< one sample-to-chunk entry and one chunk a sample
Movie OneChunk(std::uint32_t n);         ///< all samples in one chunk
Movie EverySampleSync(std::uint32_t n);  ///< every sample in the sync table
Movie HugeSyncTable(std::uint32_t n);    ///< four sync entries a sample
Movie ZeroCounts(std::uint32_t n);      ///< n time-to-sample entries of no sample before the others
Movie FallingCounts(std::uint32_t n);   ///< counts that take back what the ones before gave
Movie ManyEdits(std::uint32_t n);       ///< n edits of one sample each
Movie ManyEmptyEdits(std::uint32_t n);  ///< n edits that show nothing before one that does
Movie EightTracks(std::uint32_t n);     ///< eight tracks
Movie ManyTracks(std::uint32_t n);      ///< n tracks of four samples
Movie ManyEmptyBoxes(std::uint32_t n);  ///< n empty boxes on every level
Movie ManyFragments(std::uint32_t n);   ///< n fragments of two tracks, one run each
Movie ManyTinyRuns(std::uint32_t n);    ///< one fragment, n runs of one sample in each track
Movie ManyTrackFragments(std::uint32_t n);  ///< one fragment, n track fragments of one sample each
Movie LongRuns(std::uint32_t n);            ///< one run of n samples that differ in every field
Movie CountedRuns(std::uint32_t n);         ///< n runs of 1000 samples that have no entries

}  // namespace complexity
