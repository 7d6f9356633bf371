#include <gtest/gtest.h>

#include "boxes/track/BoxTRAK.h"
#include "io/Limits.h"
#include "io/Mp4StreamReader.h"
#include "io/ScanControl.h"
#include "platform/ZR_Log.h"
#include "tests/Fixtures.h"
#include "tests/TrackFixtures.h"

using fixture::Edts;
using fixture::Outcome;
using fixture::ReadBox;
using fixture::Tkhd;

namespace {

std::vector<std::wstring>& Log() {
  static std::vector<std::wstring> log;
  return log;
}

Bytes EmptyMdia(std::uint32_t timescale = 1000, std::string_view handler = "vide") {
  return Box("mdia",
             fixture::Mdhd(timescale, 400) + fixture::Hdlr(handler) + Box("minf", Box("stbl")));
}

long long Payload(const Bytes& box) { return static_cast<long long>(box.size()) - 8; }

/// Reads a track of `children` from memory and keeps what came of it.
struct ReadTrack {
  Mp4Context context;
  BoxTRAK trak;
  Outcome end;
  long long size;

  explicit ReadTrack(const Bytes& children) : size(static_cast<long long>(children.size())) {
    end = ReadBox(&trak, Box("trak", children), &context);
  }
  Mp4Context::TRACK* record() { return context.GetCurrentTrack(); }
};

}  // namespace

/// The tests are a host with a log of its own.
extern "C" void ZRLogEx(const wchar_t* message) { Log().push_back(message); }

TEST(BoxTRAK, ReadsHeaderAndMedia) {
  ReadTrack read(Tkhd(9) + EmptyMdia());
  EXPECT_TRUE(read.end.ok);
  EXPECT_EQ(read.end.pos, read.size);
  EXPECT_EQ(read.trak.GetTrackID(), 9);
  ASSERT_NE(read.trak.mediaBox, nullptr);
  EXPECT_EQ(read.trak.mediaBox->GetTimescale(), 1000u);
  EXPECT_EQ(read.record()->trackId, 9u);
  EXPECT_EQ(read.record()->duration, 400);
  EXPECT_EQ(read.record()->movieTimescale, 0);
  EXPECT_EQ(read.trak.hasEditList, 0);
  EXPECT_EQ(read.trak.editDuration, 0);
}

TEST(BoxTRAK, FailsWithoutReaderOrBelow4Bytes) {
  Mp4Context context;
  BoxTRAK trak;
  const Bytes bytes = Tkhd(1);
  mmBufReader reader(bytes.data(), bytes.size());
  EXPECT_FALSE(trak.ReadData(nullptr, 100, &context));
  EXPECT_FALSE(trak.ReadData(&reader, 3, &context));
  EXPECT_FALSE(trak.ReadData(&reader, -8, &context));
  EXPECT_EQ(reader.GetPos(), 0);
  EXPECT_FALSE(trak.ReadData(&reader, 4, &context));  // reads the header, misses the media
  EXPECT_EQ(reader.GetPos(), 4);
  EXPECT_EQ(trak.GetTrackID(), 1);
}

TEST(BoxTRAK, HandlerTypeIsAlwaysZero) {
  ReadTrack read(Tkhd(9) + EmptyMdia());
  EXPECT_EQ(read.record()->handlerType, 0x65646976u);
  EXPECT_EQ(read.trak.GetHandlerType(), 0u);
}

TEST(BoxTRAK, TrackIDIsZeroWithoutHeader) {
  BoxTRAK trak;
  EXPECT_EQ(trak.GetTrackID(), 0);
}

TEST(BoxTRAK, MissingHeaderDoesNotFailIt) {
  fixture::OneTrack one = fixture::OneTrack::OfId(3);
  BoxTRAK trak;
  EXPECT_TRUE(ReadBox(&trak, Box("trak", EmptyMdia(77)), &one.context).ok);
  EXPECT_EQ(trak.GetTrackID(), 0);
  EXPECT_EQ(one.context.GetTrackCount(), 1);
  EXPECT_EQ(one.track->timescale, 77);
}

TEST(BoxTRAK, MissingMediaFailsItAfterPublishing) {
  ReadTrack read(Tkhd(9) + Edts({{500, 20}}));
  EXPECT_FALSE(read.end.ok);
  EXPECT_EQ(read.end.pos, read.size);
  EXPECT_EQ(read.trak.hasEditList, 1);
  EXPECT_EQ(read.record()->hasEditList, 1);
}

TEST(BoxTRAK, FailingMediaStopsTheLoopAndStillPublishes) {
  ReadTrack read(Tkhd(9) + Edts({{500, 20}}) + Box("mdia", fixture::Mdhd()) + Tkhd(10));
  EXPECT_FALSE(read.end.ok);
  EXPECT_EQ(read.end.pos, read.size);
  EXPECT_EQ(read.context.GetTrackCount(), 1);
  EXPECT_EQ(read.record()->editList.size(), 1u);
}

TEST(BoxTRAK, FailingHeaderStopsTheLoop) {
  ReadTrack read(EmptyMdia() + Box("tkhd") + Tkhd(9));
  EXPECT_FALSE(read.end.ok);
  EXPECT_EQ(read.end.pos, read.size);
  EXPECT_EQ(read.context.GetTrackCount(), 0);
}

TEST(BoxTRAK, MediaBeforeHeaderFillsTheRecordThatWasCurrent) {
  fixture::OneTrack one = fixture::OneTrack::OfId(3);
  BoxTRAK trak;
  EXPECT_TRUE(ReadBox(&trak, Box("trak", EmptyMdia(77) + Tkhd(4)), &one.context).ok);
  EXPECT_EQ(one.context.GetTrack(3)->timescale, 77);
  ASSERT_NE(one.context.GetTrack(4), nullptr);
  EXPECT_EQ(one.context.GetTrack(4)->timescale, 0);
  EXPECT_EQ(one.context.GetCurrentTrack(), one.context.GetTrack(4));
}

TEST(BoxTRAK, RepeatedTrackIDFillsTheFirstRecord) {
  Mp4Context context;
  BoxTRAK first;
  BoxTRAK second;
  ReadBox(&first, Box("trak", Tkhd(5) + EmptyMdia(100)), &context);
  ReadBox(&second, Box("trak", Tkhd(5) + Edts({{7, 8}}) + EmptyMdia(200)), &context);
  ASSERT_EQ(context.GetTrackCount(), 2);
  EXPECT_EQ(context.GetTrackByIndex(0)->timescale, 200);
  EXPECT_EQ(context.GetTrackByIndex(0)->hasEditList, 1);
  EXPECT_EQ(context.GetTrackByIndex(1)->timescale, 0);
  EXPECT_EQ(context.GetTrackByIndex(1)->hasEditList, 0);
}

TEST(BoxTRAK, SecondHeaderReusesTheBoxAndAddsARecord) {
  ReadTrack read(Tkhd(5) + Tkhd(6) + EmptyMdia());
  EXPECT_TRUE(read.end.ok);
  EXPECT_EQ(read.trak.GetTrackID(), 6);
  EXPECT_EQ(read.context.GetTrackCount(), 2);
  EXPECT_EQ(read.record()->trackId, 6u);
}

TEST(BoxTRAK, SecondMediaReplacesTheFirst) {
  ReadTrack read(Tkhd(5) + EmptyMdia(100) + EmptyMdia(200));
  EXPECT_TRUE(read.end.ok);
  EXPECT_EQ(read.trak.mediaBox->GetTimescale(), 200u);
}

TEST(BoxTRAK, UuidAndUnknownChildrenAreSkipped) {
  ReadTrack read(Tkhd(5) + Box("uuid", Bytes().Fill(30, 0xFF)) + Box("load", Bytes().Fill(16)) +
                 EmptyMdia());
  EXPECT_TRUE(read.end.ok);
  EXPECT_EQ(read.end.pos, read.size);
}

TEST(BoxTRAK, ChildOfSizeZeroTakesTheRest) {
  Bytes children = Tkhd(5) + EmptyMdia();
  const std::size_t rest = children.size();
  children.Append(SizedBox(0, "free", Bytes().Fill(21)));
  ReadTrack read(children);
  EXPECT_TRUE(read.end.ok);
  EXPECT_EQ(read.end.pos, static_cast<long long>(rest) + 29);
}

TEST(BoxTRAK, OverrunningChildIsSteppedBackOver) {
  ReadTrack read(Tkhd(5) + EmptyMdia() + SizedBox(1000, "free"));
  EXPECT_TRUE(read.end.ok);
  EXPECT_EQ(read.end.pos, read.size);
}

TEST(BoxTRAK, LargeSizeFormIsNotUnderstood) {
  // Size 1 is a payload of -7: the reader steps back into the header just read.
  Mp4Context context;
  BoxTRAK trak;
  const Bytes bytes = Box("trak", SizedBox(1, "free", Bytes().Fill(3)));
  mmBufReader reader(bytes.data(), bytes.size());
  reader.SetPos(8);
  EXPECT_FALSE(trak.ReadData(&reader, 11, &context));
  EXPECT_EQ(reader.GetPos(), 8 + 11);
}

TEST(BoxTRAK, WithoutAnyRecordTheHostIsToldOnce) {
  Log().clear();
  ReadTrack read(Edts({{500, 20}}) + EmptyMdia());
  EXPECT_TRUE(read.end.ok);
  ASSERT_EQ(Log().size(), 1u);
  EXPECT_EQ(Log()[0], L"BoxTRAK LINE: 173: pTrack = context->GetCurrentTrack() !;pTrack == NULL");
  EXPECT_EQ(read.trak.hasEditList, 0);
  EXPECT_EQ(read.trak.editDuration, 0);
  EXPECT_EQ(read.trak.movieTimescale, 1000);
}

TEST(BoxTRAK, WithARecordNothingIsLogged) {
  Log().clear();
  ReadTrack read(Tkhd(1) + EmptyMdia());
  EXPECT_TRUE(Log().empty());
}

TEST(BoxTRAK, WithoutContextTheMediaFailsIt) {
  Log().clear();
  BoxTRAK trak;
  const Bytes bytes = Box("trak", Tkhd(9) + Edts({{1, 1}}) + EmptyMdia());
  const Outcome end = ReadBox(&trak, bytes, nullptr);
  EXPECT_FALSE(end.ok);
  // The media box reads nothing of its payload, and the loop has counted it.
  EXPECT_EQ(end.pos, Payload(bytes) - Payload(EmptyMdia()));
  EXPECT_EQ(trak.GetTrackID(), 9);
  EXPECT_EQ(Log().size(), 1u);
}

TEST(BoxTRAK, FormatIsCopiedFromTheRecord) {
  fixture::OneTrack one;
  one.track->format = 0x736D7264;  // "drms"
  BoxTRAK trak;
  ReadBox(&trak, Box("trak", Box("free")), &one.context);
  EXPECT_EQ(trak.format, 0x736D7264u);
}

TEST(BoxTRAK, FormatOfItsSampleEntryIsKept) {
  Mp4Context context;
  BoxTRAK trak;
  fixture::Track track;
  track.format = "drms";
  track.handler = "soun";
  EXPECT_TRUE(ReadBox(&trak, fixture::Trak(track), &context).ok);
  EXPECT_EQ(context.GetCurrentTrack()->format, 0x736D7264u);
  EXPECT_EQ(trak.format, 0x736D7264u);
}

// Edit list.

TEST(BoxTRAK, SeveralEditsAreKeptInBoxAndRecord) {
  fixture::OneTrack one;
  one.context.SetTimescale(600);
  BoxTRAK trak;
  const Bytes children = Tkhd(2) + Edts({{500, -1, 1}, {0xFFFFFF9C, 20, 2}}) + EmptyMdia(90000);
  EXPECT_TRUE(ReadBox(&trak, Box("trak", children), &one.context).ok);
  Mp4Context::TRACK* track = one.context.GetTrack(2);
  EXPECT_EQ(trak.hasEditList, 1);
  EXPECT_EQ(trak.movieTimescale, 600);
  EXPECT_EQ(trak.editIndex, 0);
  EXPECT_EQ(trak.editDuration, 400);  // the second duration is -100
  EXPECT_EQ(track->hasEditList, 1);
  EXPECT_EQ(track->movieTimescale, 600);
  EXPECT_EQ(track->duration, 60000);  // 90000 * 400 / 600
  for (const auto* list : {&trak.editList, &track->editList}) {
    ASSERT_EQ(list->size(), 2u);
    EXPECT_EQ(list->at(0).segmentDuration, 500);
    EXPECT_EQ(list->at(0).mediaTime, -1);
    EXPECT_EQ(list->at(0).mediaRate, 1u);
    EXPECT_EQ(list->at(1).segmentDuration, -100);
    EXPECT_EQ(list->at(1).mediaTime, 20);
    EXPECT_EQ(list->at(1).mediaRate, 2u);
  }
}

TEST(BoxTRAK, SingleEditFromTheStartIsDroppedButSetsTheDuration) {
  ReadTrack read(Tkhd(1) + Edts({{250, 0}}) + EmptyMdia(90000));
  EXPECT_EQ(read.trak.hasEditList, 0);
  EXPECT_TRUE(read.trak.editList.empty());
  EXPECT_EQ(read.trak.editDuration, 250);
  EXPECT_EQ(read.record()->hasEditList, 0);
  EXPECT_TRUE(read.record()->editList.empty());
  EXPECT_EQ(read.record()->movieTimescale, 1000);
  EXPECT_EQ(read.record()->duration, 22500);  // 90000 * 250 / 1000
}

TEST(BoxTRAK, SingleEditFromElsewhereIsKept) {
  for (const int mediaTime : {1, -1, -2}) {
    ReadTrack read(Tkhd(1) + Edts({{250, mediaTime}}) + EmptyMdia());
    EXPECT_EQ(read.trak.hasEditList, 1);
    ASSERT_EQ(read.record()->editList.size(), 1u);
    EXPECT_EQ(read.record()->editList[0].mediaTime, mediaTime);
  }
}

TEST(BoxTRAK, TwoEditsFromTheStartAreKept) {
  ReadTrack read(Tkhd(1) + Edts({{250, 0}, {250, 0}}) + EmptyMdia());
  EXPECT_EQ(read.trak.hasEditList, 1);
}

TEST(BoxTRAK, EditedDurationIsTruncatedTowardZero) {
  ReadTrack shorter(Tkhd(1) + Edts({{1999, 0}}) + EmptyMdia(1));
  EXPECT_EQ(shorter.record()->duration, 1);
  ReadTrack negative(Tkhd(1) + Edts({{static_cast<std::uint32_t>(-1999), 0}}) + EmptyMdia(1));
  EXPECT_EQ(negative.record()->duration, -1);
}

TEST(BoxTRAK, MovieTimescaleOfZeroDividesAsOne) {
  fixture::OneTrack one;
  one.context.SetTimescale(0);
  BoxTRAK trak;
  ReadBox(&trak, Box("trak", Tkhd(2) + Edts({{7, 1}}) + EmptyMdia(100)), &one.context);
  EXPECT_EQ(one.context.GetTrack(2)->duration, 700);
}

TEST(BoxTRAK, EditBoxBeforeTheMediaUsesTheTimescaleReadLater) {
  ReadTrack read(Edts({{2000, 5}}) + EmptyMdia(100) + Tkhd(1));
  // The media filled no record; the new record's timescale is 0.
  EXPECT_EQ(read.record()->duration, 0);
  EXPECT_EQ(read.trak.editDuration, 2000);
}

TEST(BoxTRAK, EditBoxOfSize8IsIgnored) {
  ReadTrack read(Tkhd(1) + Box("edts") + EmptyMdia());
  EXPECT_TRUE(read.end.ok);
  EXPECT_EQ(read.end.pos, read.size);
  EXPECT_EQ(read.trak.movieTimescale, 0);
  EXPECT_EQ(read.record()->duration, 400);
}

TEST(BoxTRAK, EditListWithoutEntriesLeavesTheListEmpty) {
  for (const std::uint32_t count : {0u, 0x80000000u, 0xFFFFFFFFu}) {
    ReadTrack read(Tkhd(1) + Box("edts", FullBox("elst", 0, 0, Bytes().Be32(count))) + EmptyMdia());
    EXPECT_TRUE(read.end.ok);
    EXPECT_EQ(read.trak.hasEditList, 0);
    EXPECT_EQ(read.trak.movieTimescale, 1000);
    EXPECT_EQ(read.record()->movieTimescale, 0);
    EXPECT_EQ(read.record()->duration, 400);
  }
}

TEST(BoxTRAK, TypeAndVersionOfTheInnerBoxDoNotMatter) {
  const Bytes inner = FullBox("what", 9, 0xFFFFFF, Bytes().Be32(1).Be32(250).Be32(3).Be32(0));
  ReadTrack read(Tkhd(1) + Box("edts", inner) + EmptyMdia());
  EXPECT_TRUE(read.end.ok);
  EXPECT_EQ(read.trak.editDuration, 250);
}

TEST(BoxTRAK, WideEditListLeavesTheReaderInsideIt) {
  // One entry of 20 bytes: 12 are taken as an entry, the other 8 as the next child's header, whose
  // size of 0 swallows the rest of the track, the media included.
  const Bytes entry = Bytes().Be64(5).Be64(3).Be32(0x10000);
  ReadTrack read(Tkhd(1) + Box("edts", FullBox("elst", 1, 0, Bytes().Be32(1) + entry)) +
                 EmptyMdia());
  EXPECT_FALSE(read.end.ok);
  EXPECT_EQ(read.trak.mediaBox, nullptr);
  EXPECT_EQ(read.end.pos, read.size - 8);
  EXPECT_EQ(read.trak.editDuration, 0);  // the high half of 5
  ASSERT_EQ(read.trak.hasEditList, 1);
  EXPECT_EQ(read.trak.editList[0].mediaTime, 5);
}

TEST(BoxTRAK, SecondInnerBoxIsReadAsAChildOfTheTrack) {
  const Bytes elst = FullBox("elst", 0, 0, Bytes().Be32(1).Be32(250).Be32(3).Be32(0));
  ASSERT_EQ(elst.size(), 28u);
  ReadTrack read(Tkhd(1) + Box("edts", elst + elst) + EmptyMdia());
  EXPECT_TRUE(read.end.ok);
  EXPECT_EQ(read.trak.editList.size(), 1u);
  // Counted twice, it is stepped back over at the end.
  EXPECT_EQ(read.end.pos, read.size - 28);
}

TEST(BoxTRAK, SecondEditBoxAppends) {
  ReadTrack read(Tkhd(1) + Edts({{250, 0}}) + Edts({{250, 0}}) + EmptyMdia());
  EXPECT_EQ(read.trak.hasEditList, 1);
  EXPECT_EQ(read.trak.editList.size(), 2u);
  EXPECT_EQ(read.trak.editDuration, 500);
}

TEST(BoxTRAK, ManyEditsAreReadInOrder) {
  std::vector<fixture::Edit> edits;
  for (std::uint32_t i = 0; i < 1000; ++i) edits.push_back({i, static_cast<std::int32_t>(i)});
  ReadTrack read(Tkhd(1) + Edts(edits) + EmptyMdia());
  EXPECT_TRUE(read.end.ok);
  ASSERT_EQ(read.trak.editList.size(), 1000u);
  for (int i = 0; i < 1000; ++i) {
    ASSERT_EQ(read.trak.editList[i].segmentDuration, i);
    ASSERT_EQ(read.trak.editList[i].mediaTime, i);
  }
  EXPECT_EQ(read.trak.editDuration, 499500);
}

TEST(BoxTRAK, EditsEndWithTheMemoryButThePositionGoesOn) {
  // One whole entry; the second is cut and does not count.
  const Bytes entries = Bytes().Be32(1).Be32(2).Be32(3).Be32(4).Be32(5).Be16(0x8001);
  const Bytes edts = Box("edts", FullBox("elst", 0, 0, Bytes().Be32(1000) + entries));
  ReadTrack read(Tkhd(1) + edts);
  EXPECT_FALSE(read.end.ok);
  ASSERT_EQ(read.trak.editList.size(), 1u);
  EXPECT_EQ(read.trak.editList[0].segmentDuration, 1);
  EXPECT_EQ(read.trak.editDuration, 1);
  EXPECT_EQ(read.end.pos, 92 + 24 + 12000);
}

TEST(BoxTRAK, EditsEndWithTheFile) {
  const Bytes entries = Bytes().Be32(1).Be32(2).Be32(3).Byte(0x7F);
  const Bytes edts = Box("edts", FullBox("elst", 0, 0, Bytes().Be32(0x7FFFFFFF) + entries));
  const Bytes bytes = Tkhd(1) + edts;
  const TempFile file(bytes);
  Mp4StreamReader reader;
  ASSERT_TRUE(reader.SetFilePath(file.wide().c_str()));
  Mp4Context context;
  BoxTRAK trak;
  EXPECT_FALSE(trak.ReadData(&reader, static_cast<long long>(bytes.size()), &context));
  ASSERT_EQ(trak.editList.size(), 1u);
  EXPECT_EQ(trak.editList[0].mediaTime, 2);
  EXPECT_EQ(reader.GetPos(), static_cast<long long>(bytes.size()));
}

TEST(BoxTRAK, SpentAccountFailsTheEditList) {
  const Bytes bytes = Box("trak", Tkhd(1) + Edts({{1, 1}, {2, 2}}) + EmptyMdia());
  for (const bool enough : {true, false}) {
    mmBufReader reader(bytes.data(), bytes.size());
    mp4::ScanControl scan(reader.GetSize());
    reader.AttachScan(&scan);
    reader.SetPos(8);
    const std::int64_t everything =
        reader.GetSize() * mp4::limits::kMemoryPerSourceByte + mp4::limits::kSpareMemory;
    ASSERT_TRUE(scan.TakeMemory(everything - (enough ? 1000 : 47)));
    Mp4Context context;
    BoxTRAK trak;
    EXPECT_EQ(trak.ReadData(&reader, Payload(bytes), &context), enough);
    EXPECT_EQ(reader.GetPos(), static_cast<long long>(bytes.size()));
    EXPECT_EQ(trak.hasEditList, enough ? 1 : 0);
  }
}

TEST(BoxTRAK, EditsArePassedOverWhileAnOpeningOnlyJudges) {
  const Bytes bytes = Box("trak", Tkhd(1) + Edts({{1, 1}, {2, 2}}) + EmptyMdia());
  mmBufReader reader(bytes.data(), bytes.size());
  mp4::ScanControl scan(reader.GetSize());
  scan.tablesUnread = true;
  reader.AttachScan(&scan);
  reader.SetPos(8);
  Mp4Context context;
  BoxTRAK trak;
  EXPECT_TRUE(trak.ReadData(&reader, Payload(bytes), &context));
  EXPECT_EQ(reader.GetPos(), static_cast<long long>(bytes.size()));
  EXPECT_EQ(trak.hasEditList, 0);
}

// References.

TEST(BoxTRAK, OneReferenceIsPassedOver) {
  ReadTrack read(Tkhd(1) + Box("tref", Box("hint", Bytes().Be32(2).Be32(3))) + EmptyMdia());
  EXPECT_TRUE(read.end.ok);
  EXPECT_EQ(read.end.pos, read.size);
}

TEST(BoxTRAK, SecondReferenceIsReadAsAChildOfTheTrack) {
  const Bytes reference = Box("cdsc", Bytes().Be32(2));
  ReadTrack read(Tkhd(1) + Box("tref", reference + reference) + EmptyMdia());
  EXPECT_TRUE(read.end.ok);
  EXPECT_EQ(read.end.pos, read.size - 12);
}

TEST(BoxTRAK, ReferenceBelowOneIDReadsNone) {
  // Three bytes of reference stay unread and become the start of the next header: 00 00 00 and the
  // first byte of the media's size, 00.
  const Bytes tref = Box("tref", SizedBox(11, "hint", Bytes().Fill(3)));
  ReadTrack read(Tkhd(1) + tref + EmptyMdia());
  EXPECT_FALSE(read.end.ok);
  EXPECT_EQ(read.trak.mediaBox, nullptr);
  EXPECT_EQ(read.end.pos, read.size - 3);
}

TEST(BoxTRAK, BytesBehindWholeIDsStayUnread) {
  const Bytes tref = Box("tref", SizedBox(15, "hint", Bytes().Be32(2).Fill(3)));
  ReadTrack read(Tkhd(1) + tref + EmptyMdia());
  EXPECT_EQ(read.trak.mediaBox, nullptr);
  EXPECT_EQ(read.end.pos, read.size - 3);
}

TEST(BoxTRAK, ReferenceSizeBelow8ReadsNone) {
  for (const std::uint32_t size : {0u, 1u, 7u, 8u}) {
    ReadTrack read(Tkhd(1) + Box("tref", SizedBox(size, "hint")) + EmptyMdia());
    EXPECT_TRUE(read.end.ok) << size;
    EXPECT_EQ(read.end.pos, read.size) << size;
  }
}

TEST(BoxTRAK, HugeReferenceEndsWithTheFile) {
  const Bytes bytes = Tkhd(1) + EmptyMdia() + Box("tref", SizedBox(0xFFFFFFFF, "hint"));
  const TempFile file(bytes);
  Mp4StreamReader reader;
  ASSERT_TRUE(reader.SetFilePath(file.wide().c_str()));
  Mp4Context context;
  BoxTRAK trak;
  EXPECT_TRUE(trak.ReadData(&reader, static_cast<long long>(bytes.size()), &context));
  EXPECT_EQ(reader.GetPos(), static_cast<long long>(bytes.size()));
}

TEST(BoxTRAK, HugeReferenceMovesAMemoryReaderOn) {
  // 0x10000003 - 8 = 0xFFFFFFB, in whole IDs 0xFFFFFF8 bytes.
  ReadTrack read(Tkhd(1) + EmptyMdia() + Box("tref", SizedBox(0x10000003, "hint")));
  EXPECT_TRUE(read.end.ok);
  EXPECT_EQ(read.end.pos, read.size + 0xFFFFFF8);
}

// Lifecycle.

TEST(BoxTRAK, ReadyToDemuxNeedsHeaderAndMedia) {
  BoxTRAK trak;
  EXPECT_FALSE(trak.ReadyToDemux());
  trak.trackHeaderBox = std::make_unique<BoxTKHD>();
  EXPECT_FALSE(trak.ReadyToDemux());
  EXPECT_EQ(trak.sample, nullptr);
  trak.trackHeaderBox.reset();
  trak.mediaBox = fixture::HandMadeMedia(1000);
  EXPECT_FALSE(trak.ReadyToDemux());
  EXPECT_EQ(trak.sample, nullptr);
}

TEST(BoxTRAK, ReadyToDemuxMakesAZeroedSampleOfItsTrack) {
  fixture::HandMadeTrack track(1000, 1000, {{10, 20, 0}, {10, 20, 0}});
  track.trak.editIndex = 1;
  EXPECT_FALSE(track.trak.ReadyToDemux());  // no tables
  ASSERT_NE(track.trak.sample, nullptr);
  EXPECT_EQ(track.trak.sample->trackId, 7u);
  EXPECT_EQ(track.trak.sample->timescale, 1000u);
  EXPECT_EQ(track.trak.sample->isVideo, 1);
  EXPECT_EQ(track.trak.sample->data, nullptr);
  EXPECT_EQ(track.trak.sample->size, 0u);
  EXPECT_EQ(track.trak.editIndex, 1);
}

TEST(BoxTRAK, SampleDataIsReleasedWithTheSample) {
  // The leak check of the sanitizers watches the three buffers.
  fixture::HandMadeTrack track(1000, 1000, {});
  track.trak.ReadyToDemux();
  track.trak.sample->data = new unsigned char[16];
  track.trak.ReadyToDemux();
  EXPECT_EQ(track.trak.sample->data, nullptr);
  track.trak.sample->data = new unsigned char[16];
  track.trak.Clear();
  EXPECT_EQ(track.trak.sample, nullptr);
  track.trak.sample = std::make_unique<BoxBase::SAMPLE>();
  track.trak.sample->data = new unsigned char[16];
}

TEST(BoxTRAK, CompleteTrackIsReady) {
  Mp4Context context;
  BoxTRAK trak;
  ASSERT_TRUE(ReadBox(&trak, fixture::Trak({}), &context).ok);
  EXPECT_TRUE(trak.ReadyToDemux());
}

TEST(BoxTRAK, ClearLeavesTheEditList) {
  ReadTrack read(Tkhd(1) + Edts({{250, 5}}) + EmptyMdia());
  read.trak.Clear();
  EXPECT_EQ(read.trak.trackHeaderBox, nullptr);
  EXPECT_EQ(read.trak.mediaBox, nullptr);
  EXPECT_EQ(read.trak.hasEditList, 1);
  EXPECT_EQ(read.trak.editList.size(), 1u);
}

TEST(BoxTRAK, SecondReadingStartsWithoutBoxes) {
  ReadTrack read(Tkhd(1) + Edts({{250, 5}}) + EmptyMdia());
  EXPECT_FALSE(ReadBox(&read.trak, Box("trak", Box("free")), &read.context).ok);
  EXPECT_EQ(read.trak.trackHeaderBox, nullptr);
  EXPECT_EQ(read.trak.mediaBox, nullptr);
  EXPECT_EQ(read.trak.editList.size(), 1u);
}
