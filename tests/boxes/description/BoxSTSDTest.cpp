#include <gtest/gtest.h>

#include "boxes/description/BoxSTSD.h"
#include "io/ScanControl.h"
#include "tests/SampleEntries.h"

using namespace fixture;

namespace {

constexpr std::uint32_t kVide = mp4::FourCC("vide");
constexpr std::uint32_t kSoun = mp4::FourCC("soun");

/// An entry's bytes from the format on, behind their size.
Bytes Entry(const Bytes& fields) {
  return Bytes().Be32(static_cast<std::uint32_t>(fields.size() + 4)).Append(fields);
}

Bytes Description(std::uint32_t count, const Bytes& entries) {
  return Bytes().Be32(0).Be32(count).Append(entries);
}

/// Reads a description for a track with `handler`, followed by 64 bytes of something else.
struct Read {
  Read(std::uint32_t handler, const Bytes& payload, long long size) : one(handler) {
    const Bytes all = payload + Bytes().Fill(64, 0xAA);
    mmBufReader reader(all.data(), all.size());
    result = box.ReadData(&reader, size, &one.context);
    position = reader.GetPos();
  }
  Read(std::uint32_t handler, const Bytes& payload)
      : Read(handler, payload, static_cast<long long>(payload.size())) {}

  OneTrack one;
  BoxSTSD box;
  bool result;
  long long position;
};

}  // namespace

TEST(BoxSTSD, DescribesVideo) {
  const Read read(kVide, Description(1, Entry(VisualFields("avc1"))));
  EXPECT_TRUE(read.result);
  EXPECT_EQ(kVide, read.box.handlerType);
  EXPECT_NE(nullptr, dynamic_cast<BoxSTSD::VisualSampleEntry*>(read.box.entry.get()));
  EXPECT_EQ(mp4::FourCC("avc1"), read.one.track->format);
  EXPECT_EQ(640U, read.one.track->videoWidth);
  EXPECT_EQ(94, read.position);
}

TEST(BoxSTSD, DescribesAudio) {
  const Read read(kSoun, Description(1, Entry(AudioFields("mp4a", 2, 16, 44100))));
  EXPECT_TRUE(read.result);
  EXPECT_NE(nullptr, dynamic_cast<BoxSTSD::AudioSampleEntry*>(read.box.entry.get()));
  EXPECT_EQ(mp4::FourCC("mp4a"), read.one.track->format);
  EXPECT_EQ(44100U, read.one.track->sampleRate);
  EXPECT_EQ(44, read.position);
}

TEST(BoxSTSD, PassesOverAHintEntry) {
  const Read read(mp4::FourCC("hint"), Description(1, Entry(Bytes().Text("drms").Fill(20))));
  EXPECT_TRUE(read.result);
  EXPECT_NE(nullptr, dynamic_cast<BoxSTSD::HintSampleEntry*>(read.box.entry.get()));
  EXPECT_EQ(0U, read.one.track->format);
  EXPECT_EQ(36, read.position);
}

TEST(BoxSTSD, MakesNoEntryForOtherHandlers) {
  for (const std::uint32_t handler : {mp4::FourCC("meta"), mp4::FourCC("text"), 0U}) {
    const Read read(handler, Description(1, Entry(Bytes().Text("drms").Fill(20))));
    EXPECT_TRUE(read.result);
    EXPECT_EQ(nullptr, read.box.entry);
    EXPECT_EQ(0U, read.one.track->format);
    EXPECT_EQ(36, read.position);
  }
}

TEST(BoxSTSD, FailsForMpegTracks) {
  const Read read(mp4::FourCC("MPEG"), Description(1, Entry(Bytes().Text("mp4s").Fill(20))));
  EXPECT_FALSE(read.result);
  EXPECT_EQ(nullptr, read.box.entry);
}

TEST(BoxSTSD, ReadsOnlyTheFirstEntry) {
  const Bytes entries =
      Entry(AudioFields("mp4a", 2, 16, 44100)) + Entry(AudioFields("drms", 6, 16, 48000));
  const Read read(kSoun, Description(2, entries));
  EXPECT_EQ(mp4::FourCC("mp4a"), read.one.track->format);
  EXPECT_EQ(2U, read.one.track->channels);
  EXPECT_EQ(80, read.position);
}

TEST(BoxSTSD, DoesNotLookAtTheEntryCount) {
  const Bytes entry = Entry(AudioFields("mp4a", 2, 16, 44100));
  EXPECT_EQ(mp4::FourCC("mp4a"), Read(kSoun, Description(0, entry)).one.track->format);
  EXPECT_EQ(mp4::FourCC("mp4a"), Read(kSoun, Description(0xFFFFFFFF, entry)).one.track->format);
}

TEST(BoxSTSD, TakesAnEntrySizeOfZeroAsTheRest) {
  const Bytes child = Box("esds", EsdsPayload(0x40, {0x12, 0x10}));
  Bytes entry = Entry(AudioFields("mp4a", 2, 16, 44100) + child);
  entry.PutBe32(0, 0);
  const Read read(kSoun, Description(1, entry));
  EXPECT_TRUE(read.result);
  EXPECT_EQ(AsText({0x12, 0x10}), read.one.ExtraData());
  EXPECT_EQ(83, read.position);
}

TEST(BoxSTSD, EndsAtItsOwnEndWhenTheEntryReachesPastIt) {
  Bytes entry = Entry(AudioFields("mp4a", 2, 16, 44100));
  entry.PutBe32(0, 0x7FFFFFFF);
  OneTrack one(kSoun);
  FileReader open(Description(1, entry) + Bytes().Fill(20));
  BoxSTSD box;
  EXPECT_TRUE(box.ReadData(&open.reader, 44, &one.context));
  EXPECT_EQ(44, open.reader.GetPos());
}

TEST(BoxSTSD, KeepsAProtectedFormat) {
  const Bytes child = Box("esds", EsdsPayload(0x40, {0x12, 0x10}));
  const Read read(kSoun, Description(1, Entry(AudioFields("drms", 2, 16, 44100) + child)));
  EXPECT_EQ(mp4::FourCC("drms"), read.one.track->format);
  EXPECT_EQ(AsText({0x12, 0x10}), read.one.ExtraData());
}

TEST(BoxSTSD, LosesTheProtectedFormatToMp3) {
  const Bytes child = Box("esds", EsdsPayload(0x69, {0x12, 0x10}));
  const Read read(kSoun, Description(1, Entry(AudioFields("drms", 2, 16, 44100) + child)));
  EXPECT_EQ(mp4::FourCC("MP3 "), read.one.track->format);
}

TEST(BoxSTSD, WithoutATrackTakesHandlerZeroAndPassesOver) {
  const Bytes payload = Description(1, Entry(AudioFields("drms", 2, 16, 44100)));
  mmBufReader reader(payload.data(), payload.size());
  Mp4Context context;
  BoxSTSD box;
  box.handlerType = kSoun;
  EXPECT_TRUE(box.ReadData(&reader, 44, &context));
  EXPECT_EQ(0U, box.handlerType);
  EXPECT_EQ(nullptr, box.entry);
  EXPECT_EQ(44, reader.GetPos());
  reader.SetPos(0);
  EXPECT_TRUE(box.ReadData(&reader, 44, nullptr));
  EXPECT_EQ(nullptr, box.entry);
  EXPECT_EQ(44, reader.GetPos());
}

TEST(BoxSTSD, FailsWithoutReaderOrPayload) {
  OneTrack one(kSoun);
  const Bytes payload = Description(1, Entry(AudioFields("mp4a", 2, 16, 44100)));
  mmBufReader reader(payload.data(), payload.size());
  BoxSTSD box;
  EXPECT_FALSE(box.ReadData(nullptr, 44, &one.context));
  EXPECT_FALSE(box.ReadData(&reader, 0, &one.context));
  EXPECT_FALSE(box.ReadData(&reader, -5, &one.context));
  EXPECT_EQ(0, reader.GetPos());
}

TEST(BoxSTSD, ClearDropsTheEntry) {
  Read read(kVide, Description(1, Entry(VisualFields("avc1"))));
  ASSERT_NE(nullptr, read.box.entry);
  read.box.Clear();
  EXPECT_EQ(nullptr, read.box.entry);
  read.box.Clear();
}

TEST(BoxSTSD, ReplacesTheEntryWhenReadAgain) {
  OneTrack one(kVide);
  const Bytes payload = Description(1, Entry(VisualFields("avc1")));
  mmBufReader reader(payload.data(), payload.size());
  BoxSTSD box;
  EXPECT_TRUE(box.ReadData(&reader, 94, &one.context));
  one.track->handlerType = mp4::FourCC("hint");
  reader.SetPos(0);
  EXPECT_TRUE(box.ReadData(&reader, 94, &one.context));
  EXPECT_NE(nullptr, dynamic_cast<BoxSTSD::HintSampleEntry*>(box.entry.get()));
}

TEST(BoxSTSD, FailsWhenTheAccountRefusesAnEntry) {
  OneTrack one(kVide);
  const Bytes child = Box("avcC", Bytes().Fill(10));
  const Bytes payload = Description(1, Entry(VisualFields("avc1") + child));
  mmBufReader reader(payload.data(), payload.size());
  mp4::ScanControl scan(static_cast<std::int64_t>(payload.size()));
  scan.TakeBytes(INT64_MAX);
  reader.AttachScan(&scan);
  EXPECT_FALSE(BoxSTSD().ReadData(&reader, static_cast<long long>(payload.size()), &one.context));
}

TEST(MpegSampleEntry, PassesOverItsPayload) {
  const Bytes bytes = Bytes().Fill(20);
  mmBufReader reader(bytes.data(), bytes.size());
  BoxSTSD::MpegSampleEntry entry;
  EXPECT_TRUE(entry.ReadData(&reader, 12, nullptr));
  EXPECT_EQ(12, reader.GetPos());
  EXPECT_FALSE(entry.ReadData(nullptr, 12, nullptr));
}
