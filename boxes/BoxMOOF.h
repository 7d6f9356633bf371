#pragma once

#include <memory>
#include <vector>

#include "boxes/BoxBase.h"
#include "boxes/BoxMFHD.h"
#include "boxes/BoxTRAF.h"

class BoxMOOV;
class BoxTRAK;
class BoxTREX;
class Mp4Context;

/// Movie fragment box "moof".
class MP4JUDGE_API BoxMOOF : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };
  void MergeFragment(Mp4Context* /*context*/, BoxMOOV* /*moov*/) {}
  void MergeTrack(BoxTRAK* /*trak*/, BoxTRAF* /*traf*/, BoxTREX* /*trex*/) {}

  std::unique_ptr<BoxMFHD> header;
  std::vector<std::unique_ptr<BoxTRAF>> trackFragments;
};
