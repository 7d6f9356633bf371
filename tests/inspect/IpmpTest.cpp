#include <gtest/gtest.h>

#include "inspect/Ipmp.h"
#include "tests/inspect/ProtectionFixtures.h"

namespace {

namespace p = protection;
using Schemes = std::vector<std::string>;

/// An "esds" box: stream 1, a decoder of a stream type, and further descriptors.
Bytes Esds(const Bytes& more, unsigned streamType = 5) {
  const Bytes decoder =
      p::Descriptor(4, Bytes{0x40}.Byte(streamType << 2 | 1).Fill(3).Be32(0).Be32(0));
  return FullBox("esds", 0, 0, p::Descriptor(3, Bytes{0, 1, 0} + decoder + more));
}
Bytes Pointer(unsigned id) { return p::Descriptor(0x0A, Bytes{}.Byte(id)); }
Bytes Declared(unsigned id, const Bytes& data) {
  return p::Descriptor(0x0B, Bytes{}.Byte(id).Be16(0xA551) + data);
}
/// A MovieBox's object descriptor: id 1, five profiles, then other descriptors.
Bytes Iods(const Bytes& more, unsigned flags = 0x4F) {
  return FullBox("iods", 0, 0, p::Descriptor(0x10, Bytes().Be16(flags).Fill(5, 0xFF).Append(more)));
}
Bytes Ipmc(const Bytes& descriptors) {
  return FullBox("ipmc", 0, 0, p::Descriptor(0x60, {}) + Bytes{1} + descriptors);
}
Bytes AudioWith(const Bytes& esds) { return p::Trak(2, "soun", {p::AudioEntry("mp4a", esds)}); }

TEST(Ipmp, AStreamWithoutPointersIsClear) {
  EXPECT_EQ(p::kClear, p::VerdictOf(p::Movie(AudioWith(Esds({})))));
  EXPECT_EQ(p::kClear, p::VerdictOf(p::Movie(AudioWith(Esds(p::Descriptor(6, {2}))))));
}

TEST(Ipmp, APointerToNothingIsNotClear) {
  for (const unsigned tag : {0x09U, 0x0AU, 0x0CU}) {
    EXPECT_EQ(tag == 0x0A ? p::kUndetermined : p::kClear,
              p::VerdictOf(p::Movie(AudioWith(Esds(p::Descriptor(tag, {7}))))))
        << tag;
  }
}

TEST(Ipmp, APointerToADescriptorIsEvidence) {
  const Bytes file =
      p::Movie(p::VideoTrak() + AudioWith(Esds(Pointer(7))) + Ipmc(Declared(7, {1, 2})));
  const mp4::Report report = p::InspectBytes(file);
  EXPECT_EQ(p::kProtected, report.verdict);
  EXPECT_FALSE(report.tracks.at(0).isProtected);
  EXPECT_TRUE(report.tracks.at(1).isProtected);
  ASSERT_EQ(1U, report.evidence.size());
  EXPECT_EQ("moov/trak[2]/mdia/minf/stbl/stsd/mp4a[1]/esds", report.evidence[0].boxPath);
  EXPECT_EQ(2U, report.evidence[0].track);
  EXPECT_EQ("mp4a", report.evidence[0].format);
  const Bytes other =
      p::Movie(p::VideoTrak() + AudioWith(Esds(Pointer(7))) + Ipmc(Declared(8, {1, 2})));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(other));
}

TEST(Ipmp, ExtendedNumbersAreFollowed) {
  const Bytes pointer = p::Descriptor(0x0A, {0xFF, 0x12, 0x34, 0, 1});
  const auto file = [&](unsigned low) {
    const Bytes descriptor = p::Descriptor(0x0B, Bytes{0xFF, 0x12}.Byte(low).Fill(20));
    return p::Movie(AudioWith(Esds(pointer)) + Ipmc(descriptor));
  };
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(file(0x35)));
  EXPECT_EQ(p::kProtected, p::VerdictOf(file(0x34)));
}

TEST(Ipmp, ADescriptorInTheStreamWithASchemeIsEvidenceAtItsOffset) {
  const Bytes file = p::Movie(AudioWith(Esds(Declared(1, p::MarlinScheme("ACBC")))));
  const mp4::Report report = p::InspectBytes(file);
  EXPECT_EQ(p::kProtected, report.verdict);
  EXPECT_EQ(Schemes{"ACBC"}, report.schemes);
  ASSERT_EQ(1U, report.evidence.size());
  ASSERT_TRUE(report.evidence[0].offset.has_value());
  const auto* type = reinterpret_cast<const char*>(file.data() + *report.evidence[0].offset + 4);
  EXPECT_EQ("schm", std::string(type, 4));
  EXPECT_EQ("moov/trak[1]/mdia/minf/stbl/stsd/mp4a[1]/esds/sinf/schm", report.evidence[0].boxPath);
}

TEST(Ipmp, ADescriptorWithoutASchemeIsNotClear) {
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(AudioWith(Esds(Declared(1, {5, 5}))))));
}

TEST(Ipmp, APointerInAWaveCounts) {
  const Bytes wave = Box("wave", p::Frma("mp4a") + Esds(Pointer(3)));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::MovieOf(p::AudioEntry("mp4a", wave, 1), "soun")));
}

TEST(Ipmp, ALengthPastTheEndHidesNoPointer) {
  Bytes esds = Esds(Pointer(3));
  EXPECT_EQ(3, esds[12]);
  // The four bytes of the stream's length.
  const auto length = static_cast<unsigned>(esds.size() - 17);
  EXPECT_EQ(length, esds[16]);
  const Bytes longer = esds.PutBe32(13, 0x80808000 | (length + 9));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(AudioWith(longer))));
}

TEST(Ipmp, OptionalFieldsOfAStreamAreSkipped) {
  const Bytes fields = Bytes{0, 1, 0xE0, 0, 9, 2, 'a', 'b', 0, 8};
  const Bytes esds = FullBox("esds", 0, 0, p::Descriptor(3, fields + Pointer(1)));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(AudioWith(esds))));
}

TEST(Ipmp, InitialObjectsAloneAreClear) {
  EXPECT_EQ(p::kClear, p::VerdictOf(p::Movie(p::VideoTrak() + Iods({}))));
  EXPECT_EQ(p::kClear,
            p::VerdictOf(p::Movie(p::VideoTrak() + Iods(p::Descriptor(0x0E, {0, 0, 0, 1})))));
  EXPECT_EQ(p::kClear, p::VerdictOf(p::Movie(p::VideoTrak() + FullBox("iods", 0, 0, {0x10, 7}))));
}

TEST(Ipmp, APointerOfTheInitialObjectsProtectsTheTracksItNames) {
  const Bytes named = p::Descriptor(0x0E, {0, 0, 0, 2}) + Pointer(4);
  const Bytes tracks = p::VideoTrak() + p::AudioTrak();
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(tracks + Iods(named))));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(tracks + Iods(Pointer(4)))));
  const mp4::Report report =
      p::InspectBytes(p::Movie(tracks + Iods(named + Declared(4, p::MarlinScheme("ACGK")))));
  EXPECT_EQ(p::kProtected, report.verdict);
  EXPECT_FALSE(report.tracks.at(0).isProtected);
  EXPECT_TRUE(report.tracks.at(1).isProtected);
}

TEST(Ipmp, EveryPointerAndEveryStreamOfTheInitialObjectsCounts) {
  const Bytes tracks = p::VideoTrak() + p::AudioTrak();
  const Bytes streams = p::Descriptor(0x0E, {0, 0, 0, 1}) + p::Descriptor(0x0E, {0, 0, 0, 2});
  const Bytes scheme = Declared(4, p::MarlinScheme("ACGK"));
  const mp4::Report one = p::InspectBytes(p::Movie(tracks + Iods(streams + Pointer(4) + scheme)));
  EXPECT_TRUE(one.tracks.at(0).isProtected);
  EXPECT_TRUE(one.tracks.at(1).isProtected);
  const Bytes named = p::Descriptor(0x0E, {0, 0, 0, 1}) + Pointer(9) + Pointer(4) + Pointer(8);
  const mp4::Report second = p::InspectBytes(p::Movie(tracks + Iods(named + scheme)));
  EXPECT_TRUE(second.tracks.at(0).isProtected);
  EXPECT_FALSE(second.tracks.at(1).isProtected);
}

TEST(Ipmp, ThousandsOfPointersStreamsAndDescriptorsEnd) {
  Bytes parts;
  for (int i = 0; i < 3000; ++i) parts.Append(Pointer(1)).Append(p::Descriptor(0x0E, {0, 0, 0, 1}));
  Bytes boxes;
  for (int i = 0; i < 100; ++i) boxes.Append(Iods(parts));
  const mp4::Report report = p::InspectBytes(p::Movie(p::VideoTrak() + boxes));
  EXPECT_EQ(p::kUndetermined, report.verdict);
  EXPECT_LE(report.problems.size(), 200U);
  Bytes descriptors;
  for (unsigned i = 0; i < 12000; ++i)
    descriptors.Append(p::Descriptor(0x0B, Bytes{0xFF}.Be16(i).Append({1, 2})));
  Bytes controls;
  for (std::size_t at = 0; at < 12000; at += 6000) {
    Bytes half;
    for (std::size_t i = at * 10; i < (at + 6000) * 10; ++i) half.Byte(descriptors[i]);
    controls.Append(Ipmc(half));
  }
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(p::VideoTrak() + controls)));
}

TEST(Ipmp, AUrlTakesThePlaceOfTheProfiles) {
  const Bytes object = Bytes().Be16(0x6F).Byte(1).Text("u").Append(Pointer(4));
  const Bytes iods = FullBox("iods", 0, 0, p::Descriptor(0x10, object));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(p::VideoTrak() + iods)));
}

TEST(Ipmp, ControlBoxesAndToolListsAreNotClear) {
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(p::VideoTrak() + Ipmc({}))));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::ImageFile(p::Iinf({p::Infe(1, 0)}) + Ipmc({}))));
  EXPECT_EQ(p::kUndetermined,
            p::VerdictOf(p::Movie(p::VideoTrak() + Iods(p::Descriptor(0x60, {1})))));
}

TEST(Ipmp, TracksAndStreamsOfIpmpMessagesAreNotClear) {
  const auto movie = [](const char* handler, unsigned streamType) {
    return p::Movie(p::VideoTrak() +
                    p::Trak(2, handler, {p::PlainEntry("mp4s", Esds({}, streamType))}));
  };
  EXPECT_EQ(p::kClear, p::VerdictOf(movie("sdsm", 3)));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(movie("ipsm", 3)));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(movie("sdsm", 7)));
}

TEST(Ipmp, InitialObjectsThatCoverATrackAreNotClear) {
  const Bytes iods = Iods({});
  const Bytes hidden = p::Trak(2, "soun", {p::ProtectedAudio()});
  const Bytes covering = p::Lying(iods, static_cast<int>(hidden.size()));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(covering + hidden + p::VideoTrak())));
}

TEST(Ipmp, NumbersAreOneByteOrExtended) {
  const Bytes plain{0xFE, 1, 2};
  EXPECT_EQ(0xFEU, mp4::ReadIpmpId(mp4::FieldView(plain.data(), plain.size())));
  const Bytes extended{0xFF, 1, 2};
  EXPECT_EQ(0xFF0102U, mp4::ReadIpmpId(mp4::FieldView(extended.data(), extended.size())));
}

}  // namespace
