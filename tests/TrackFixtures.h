#pragma once

#include <vector>

#include "boxes/track/BoxTRAK.h"
#include "io/mmBufReader.h"
#include "tests/Bytes.h"
#include "tests/MovieFixtures.h"
#include "tests/OneTrack.h"

namespace fixture {

/// What reading one box left behind. The reader starts at the box's payload.
struct Outcome {
  bool ok;
  long long pos;  ///< bytes passed, counted from the payload's start
};

/// Reads a whole box, header included in `bytes`, from memory.
inline Outcome ReadBox(BoxBase* box, const Bytes& bytes, Mp4Context* context) {
  mmBufReader reader(bytes.data(), bytes.size());
  reader.SetPos(8);
  const bool ok = box->ReadData(&reader, static_cast<long long>(bytes.size()) - 8, context);
  return {ok, reader.GetPos() - 8};
}

/// A media box put together by hand: a video track without any sample table.
inline std::unique_ptr<BoxMDIA> HandMadeMedia(std::uint32_t timescale) {
  auto media = std::make_unique<BoxMDIA>();
  media->mediaHeaderBox = std::make_unique<BoxMDHD>();
  media->mediaHeaderBox->timescale = timescale;
  media->handlerBox = std::make_unique<BoxHDLR>();
  media->handlerBox->handlerType = 0x65646976;  // "vide"
  media->mediaInformationBox = std::make_unique<BoxMINF>();
  media->mediaInformationBox->sampleTableBox = std::make_unique<BoxSTBL>();
  return media;
}

/// A track of that media and ID 7 whose cursor stands where `At` says; without tables a seek leaves
/// it there.
struct HandMadeTrack {
  BoxTRAK trak;

  HandMadeTrack(std::uint32_t timescale, std::int32_t movieTimescale,
                const std::vector<tagElstItem>& edits) {
    trak.trackHeaderBox = std::make_unique<BoxTKHD>();
    trak.trackHeaderBox->trackId = 7;
    trak.mediaBox = HandMadeMedia(timescale);
    trak.movieTimescale = movieTimescale;
    trak.editList = edits;
    trak.hasEditList = edits.empty() ? 0 : 1;
  }
  BoxTRAK& At(std::int64_t mediaTime) {
    trak.mediaBox->mediaInformationBox->sampleTableBox->curTime = mediaTime;
    return trak;
  }
};

}  // namespace fixture
