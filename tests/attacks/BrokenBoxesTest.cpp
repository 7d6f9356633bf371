// Every box, broken in every simple way: each must end, keep to its bytes and fail or succeed
// without harm. The sanitizer build is what gives these tests their teeth; what is asserted here is
// that no box moves the reader before the start or takes memory for bytes that are not there.
#include <gtest/gtest.h>

#include "io/Mp4StreamReader.h"
#include "io/mmBufReader.h"
#include "tests/Fixtures.h"
#include "tests/GoldenBoxes.h"

namespace {

constexpr long long kLargestTable = 1 << 20;

/// Bytes the record of the current track holds.
long long Held(Mp4Context* context) {
  const Mp4Context::TRACK* track = context->GetTrackByIndex(0);
  return static_cast<long long>(track->timeToSampleTable.size() * sizeof(tagSTTS) +
                                track->sampleSizeTable.size() * sizeof(tagSTSZ) +
                                track->chunkOffsetTable.size() * sizeof(tagSTCO) +
                                track->sampleToChunkTable.size() * sizeof(tagSTSC) +
                                track->editList.size() * sizeof(tagElstItem));
}

/// Edit lists are read whatever their boxes say, and movie-extends and fragment boxes enter
/// children they do not know. Stepping back by all that was counted may then lead before the start
/// of a block of memory, the only reader that goes there.
bool CountsWhatItDoesNotRead(const golden::Sample& sample) {
  for (const char* type : {"moov", "moov-cmov", "trak", "mvex", "moof", "traf"}) {
    if (sample.name == type) return true;
  }
  return false;
}

/// Boxes that are passed over whole step back over a negative size; nobody else moves for one.
bool IsPassedOver(const golden::Sample& sample) {
  for (const char* type : {"vmhd", "smhd", "dinf", "edts", "mdat", "uuid"}) {
    if (sample.name == type) return true;
  }
  return false;
}

void ExpectNotBeforeTheStart(mmStreamReader* reader, const golden::Sample& sample,
                             long long declared) {
  if (declared < 0 && IsPassedOver(sample)) {
    EXPECT_EQ(reader->GetPos(), declared);
  } else if (!CountsWhatItDoesNotRead(sample)) {
    EXPECT_GE(reader->GetPos(), 0) << declared;
  }
}

void ReadFromMemory(const golden::Sample& sample, const Bytes& bytes, long long declared) {
  const auto context = golden::Surroundings(sample);
  mmBufReader reader(bytes.data(), bytes.size());
  sample.make()->ReadData(&reader, declared, context.get());
  ExpectNotBeforeTheStart(&reader, sample, declared);
  EXPECT_LT(Held(context.get()), kLargestTable) << sample.name;
  mmBufReader again(bytes.data(), bytes.size());
  sample.make()->ReadData(&again, declared, nullptr);
  ExpectNotBeforeTheStart(&again, sample, declared);
}

class BrokenBoxes : public testing::TestWithParam<golden::Sample> {};

std::string NameOf(const testing::TestParamInfo<golden::Sample>& info) {
  std::string name = info.param.name;
  for (char& c : name) c = c == '-' ? '_' : c;
  return name;
}

}  // namespace

TEST_P(BrokenBoxes, GoldenPayloadIsReadWhole) {
  const golden::Sample& sample = GetParam();
  const auto context = golden::Surroundings(sample);
  mmBufReader reader(sample.payload.data(), sample.payload.size());
  EXPECT_TRUE(sample.make()->ReadData(&reader, reader.GetSize(), context.get()));
  EXPECT_EQ(reader.GetPos(), reader.GetSize());
}

TEST_P(BrokenBoxes, EveryTruncationOfTheBytesEnds) {
  const golden::Sample& sample = GetParam();
  for (std::size_t n = 0; n < sample.payload.size(); ++n) {
    const Bytes cut = Bytes(sample.payload).Cut(n);
    ReadFromMemory(sample, cut, static_cast<long long>(sample.payload.size()));
  }
}

TEST_P(BrokenBoxes, EveryTruncationOfTheDeclaredSizeEnds) {
  const golden::Sample& sample = GetParam();
  for (long long n = -9; n < static_cast<long long>(sample.payload.size()); ++n) {
    ReadFromMemory(sample, sample.payload, n);
  }
}

TEST_P(BrokenBoxes, EveryByteAtItsExtremesEnds) {
  const golden::Sample& sample = GetParam();
  for (std::size_t at = 0; at < sample.payload.size(); ++at) {
    for (const unsigned value : {0x00u, 0x7Fu, 0x80u, 0xFFu}) {
      Bytes changed;
      for (std::size_t i = 0; i < sample.payload.size(); ++i) {
        changed.Byte(i == at ? value : sample.payload[i]);
      }
      ReadFromMemory(sample, changed, static_cast<long long>(changed.size()));
    }
  }
}

TEST_P(BrokenBoxes, EveryWordAtItsLargestEnds) {
  const golden::Sample& sample = GetParam();
  for (std::size_t at = 0; at + 4 <= sample.payload.size(); ++at) {
    for (const std::uint32_t value : {0xFFFFFFFFu, 0x7FFFFFFFu, 0x80000000u, 0u, 7u}) {
      const Bytes changed = Bytes(sample.payload).PutBe32(at, value);
      ReadFromMemory(sample, changed, static_cast<long long>(changed.size()));
    }
  }
}

TEST_P(BrokenBoxes, TrailingBytesEnd) {
  const golden::Sample& sample = GetParam();
  for (const std::size_t more : {1u, 4u, 7u, 8u, 100u}) {
    const Bytes longer = sample.payload + Bytes().Fill(more, 0xFF);
    ReadFromMemory(sample, longer, static_cast<long long>(longer.size()));
    ReadFromMemory(sample, longer, static_cast<long long>(sample.payload.size()));
  }
}

TEST_P(BrokenBoxes, FileThatEndsInsideTheBoxEnds) {
  const golden::Sample& sample = GetParam();
  const TempFile file(Bytes(sample.payload).Cut(sample.payload.size() / 2));
  for (const long long declared :
       {static_cast<long long>(sample.payload.size()), 1LL << 31, (1LL << 32) - 9, 1LL << 62}) {
    Mp4StreamReader reader;
    ASSERT_TRUE(reader.SetFilePath(file.wide().c_str()));
    const auto context = golden::Surroundings(sample);
    sample.make()->ReadData(&reader, declared, context.get());
    EXPECT_GE(reader.GetPos(), 0);
    EXPECT_LT(Held(context.get()), kLargestTable) << sample.name;
  }
}

TEST_P(BrokenBoxes, NullReaderFails) {
  const auto context = golden::Surroundings(GetParam());
  EXPECT_FALSE(GetParam().make()->ReadData(nullptr, 100, context.get()));
}

INSTANTIATE_TEST_SUITE_P(All, BrokenBoxes, testing::ValuesIn(golden::All()), NameOf);
