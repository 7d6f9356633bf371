#pragma once

#include <cstdint>
#include <memory>

#include "boxes/base/BoxBase.h"
#include "io/mmBufReader.h"

/// Compressed movie box "cmov" (QuickTime): a "dcom" that names the compression, which must be
/// "zlib", and a "cmvd" that holds the announced size of the movie and its compressed bytes.
class MP4JUDGE_API BoxCMOV : public BoxBase {
 public:
  /// Inflates the movie. False without reader, for a negative size, a child out of place, another
  /// compression, bytes that zlib refuses, or an announced size that is not above the size of the
  /// "cmvd", or more than a movie or its compressed bytes justify (io/Limits.h). The context is not
  /// used. The reader then stands behind the payload.
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;

  /// The inflated movie, a whole "moov" box, or null. As long as it was announced; what the
  /// compressed bytes did not fill is zero.
  mmBufReader* GetMOOVDataStream() { return movieStream.get(); }

  std::unique_ptr<mmBufReader> movieStream;

 private:
  bool ReadChildren(mmStreamReader* reader, long long size, long long* consumed);
  bool Inflate(mmStreamReader* reader, std::uint32_t length, std::uint32_t announced,
               long long* consumed);
};
