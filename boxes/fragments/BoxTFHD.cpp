#include "boxes/fragments/BoxTFHD.h"

#include "boxes/base/BoxReading.h"

bool BoxTFHD::ReadData(mmStreamReader* reader, long long size, Mp4Context* /*context*/) {
  if (reader == nullptr || size < 0) return false;
  const mp4::FullBoxHeader header = mp4::ReadFullBoxHeader(reader);
  version = header.version;
  tf_flags = header.flags;
  track_ID = reader->GetBe32();
  long long consumed = 8;
  if ((tf_flags & kBaseDataOffset) != 0) {
    base_data_offset = reader->GetBe64();
    consumed += 8;
  }
  const auto readIf = [&](std::uint32_t bit, std::uint32_t* field) {
    if ((tf_flags & bit) == 0) return;
    *field = reader->GetBe32();
    consumed += 4;
  };
  readIf(kSampleDescriptionIndex, &sample_description_index);
  readIf(kDefaultSampleDuration, &default_sample_duration);
  readIf(kDefaultSampleSize, &default_sample_size);
  readIf(kDefaultSampleFlags, &default_sample_flags);
  if ((tf_flags & kDurationIsEmpty) != 0) duration_is_empty = true;
  reader->Skip(size - consumed);
  return true;
}
