// One box's payload from memory: the first byte chooses the box, the second the surroundings.
#include <cstdint>
#include <memory>

#include "boxes/fragments/BoxMOOF.h"
#include "boxes/movie/BoxCMOV.h"
#include "boxes/movie/BoxFTYP.h"
#include "boxes/movie/BoxMOOV.h"
#include "fuzz/BoxMutator.h"
#include "io/ScanControl.h"
#include "io/mmBufReader.h"

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed) {
  if (size < 8 || seed % 4 == 0) return LLVMFuzzerMutate(data, size, most);
  return 4 + fuzz::MutateBoxes(data + 4, size - 4, most - 4, seed);
}

namespace {

using Maker = std::unique_ptr<BoxBase> (*)();

template <class Box>
std::unique_ptr<BoxBase> Make() {
  return std::make_unique<Box>();
}

template <unsigned kType>
std::unique_ptr<BoxBase> MakeOffsets() {
  return std::make_unique<BoxSTCO>(kType);
}

constexpr Maker kMakers[] = {
    Make<BoxMOOV>,           Make<BoxMOOF>,          Make<BoxTRAK>, Make<BoxMDIA>, Make<BoxMINF>,
    Make<BoxSTBL>,           Make<BoxSTSD>,          Make<BoxSTTS>, Make<BoxSTSC>, Make<BoxSTSZ>,
    Make<BoxSTSS>,           Make<BoxFTYP>,          Make<BoxMVHD>, Make<BoxCMOV>, Make<BoxTKHD>,
    Make<BoxMDHD>,           Make<BoxHDLR>,          Make<BoxESDS>, Make<BoxAVCC>, Make<BoxWAVE>,
    Make<BoxUDTA>,           Make<BoxMeta>,          Make<BoxIlst>, Make<BoxMVEX>, Make<BoxTREX>,
    Make<BoxMEHD>,           Make<BoxTRAF>,          Make<BoxTFHD>, Make<BoxTRUN>, Make<BoxMFHD>,
    MakeOffsets<0x6F637473>, MakeOffsets<0x34366F63>};

/// A context with a current track whose handler, format and packets the second byte chooses.
void Surround(Mp4Context* context, std::uint8_t choice) {
  static constexpr std::uint32_t kHandlers[] = {0x6E756F73, 0x65646976, 0x746E6968, 0x4745504D};
  static constexpr std::uint32_t kFormats[] = {0, 0x324D4451, 0x34326E69, 0x726D6173};
  Mp4Context::TRACK* track = context->AddTrack(1);
  context->SetCurrentTrack(1);
  track->handlerType = kHandlers[choice & 3];
  track->format = kFormats[choice >> 2 & 3];
  track->timescale = choice & 0x10 ? 48000 : 0;
  track->channels = choice & 0x20 ? 2 : 0;
  if (choice & 0x40) context->SetMovMode();
  if (choice & 0x80) track->samplesPerPacket = track->bytesPerFrame = track->bitsPerSample = 64;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 4) return 0;
  mmBufReader reader(data + 4, size - 4);
  mp4::ScanControl scan(static_cast<std::int64_t>(size - 4));
  scan.tablesUnread = (data[2] & 1) != 0;
  reader.AttachScan(&scan);
  Mp4Context context;
  if ((data[2] & 2) == 0) Surround(&context, data[1]);
  const auto box = kMakers[data[0] % std::size(kMakers)]();
  // The declared size may lie: up to 127 bytes more or less than there are.
  const long long declared = reader.GetSize() + static_cast<signed char>(data[3]);
  box->ReadData(&reader, declared, (data[2] & 4) != 0 ? nullptr : &context);
  return 0;
}
