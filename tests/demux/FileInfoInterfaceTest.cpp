#include <gtest/gtest.h>

#include "demux/FileInfoInterface.h"
#include "demux/Mp4Demux.h"
#include "demux/Verdict.h"
#include "io/Mp4StreamReader.h"
#include "tests/Fixtures.h"
#include "tests/MovieFixtures.h"

using namespace fixture;

namespace {

int Judge(const Bytes& bytes) {
  const TempFile file(bytes);
  return JudgeMP4HaveDRM(file.wide().c_str());
}

Bytes FileWith(const std::string& handler, const std::string& format) {
  return Ftyp("M4A ", {"mp42"}) + Moov({Track{.format = format, .handler = handler}});
}

}  // namespace

TEST(JudgeMP4HaveDRM, ProtectedAudioAndVideoAreFound) {
  EXPECT_EQ(Judge(FileWith("soun", "drms")), 1);
  EXPECT_EQ(Judge(FileWith("vide", "drms")), 1);
}

TEST(JudgeMP4HaveDRM, ClearFormatsAreClear) {
  EXPECT_EQ(Judge(FileWith("soun", "mp4a")), 0);
  EXPECT_EQ(Judge(FileWith("vide", "avc1")), 0);
}

TEST(JudgeMP4HaveDRM, OtherProtectedFormatsDoNotCount) {
  for (const char* format : {"drmi", "enca", "encv", "DRMS", "drm "}) {
    EXPECT_EQ(Judge(FileWith("soun", format)), 0) << format;
    EXPECT_EQ(Judge(FileWith("vide", format)), 0) << format;
  }
}

TEST(JudgeMP4HaveDRM, OtherHandlersDoNotCount) {
  for (const char* handler : {"hint", "text", "meta", "SOUN"}) {
    EXPECT_EQ(Judge(FileWith(handler, "drms")), 0) << handler;
  }
}

TEST(JudgeMP4HaveDRM, HandlerOfTheRecordDecides) {
  Mp4Context context;
  Mp4Context::TRACK* track = context.AddTrack(1);
  track->format = 0x736D7264;
  track->handlerType = 0x746E6968;  // "hint"
  EXPECT_FALSE(mp4::HasProtectedTrack(&context));
  track->handlerType = 0x6E756F73;  // "soun"
  EXPECT_TRUE(mp4::HasProtectedTrack(&context));
  track->handlerType = 0x65646976;  // "vide"
  EXPECT_TRUE(mp4::HasProtectedTrack(&context));
  EXPECT_FALSE(mp4::HasProtectedTrack(nullptr));
}

TEST(JudgeMP4HaveDRM, OneProtectedTrackAmongManyIsEnough) {
  const Track clear;
  const Track song{.id = 2, .format = "drms", .handler = "soun"};
  EXPECT_EQ(Judge(Ftyp("isom") + Moov({clear, song})), 1);
  EXPECT_EQ(Judge(Ftyp("isom") + Moov({song, clear})), 1);
}

TEST(JudgeMP4HaveDRM, UnreadableFilesAreNotProtected) {
  EXPECT_EQ(JudgeMP4HaveDRM(nullptr), 0);
  EXPECT_EQ(JudgeMP4HaveDRM(L""), 0);
  EXPECT_EQ(JudgeMP4HaveDRM(L"/nonexistent/never.mp4"), 0);
  EXPECT_EQ(Judge(Bytes()), 0);
  EXPECT_EQ(Judge(Ftyp("isom")), 0);
}

TEST(JudgeMP4HaveDRM, ProtectedTrackInAFileThatFailsLaterIsNotReported) {
  const Bytes bad = SizedBox(4, "moof", Bytes().Fill(16));
  EXPECT_EQ(Judge(FileWith("soun", "drms") + bad), 0);
}

TEST(JudgeMP4HaveDRM, ProtectedTrackInACompressedMovieIsFound) {
  const Track song{.format = "drms", .handler = "soun"};
  EXPECT_EQ(Judge(Box("moov", Cmov(Moov({song})))), 1);
}

TEST(InitForJudgement, TakesAReaderWhoseFileIsSet) {
  const TempFile song(FileWith("soun", "drms"));
  auto reader = std::make_unique<Mp4StreamReader>();
  ASSERT_TRUE(reader->SetFilePath(song.wide().c_str()));
  Mp4Demux demux;
  EXPECT_TRUE(demux.InitForJudgement(std::move(reader)));
  EXPECT_TRUE(mp4::HasProtectedTrack(demux.GetContext()));
}

TEST(InitForJudgement, DropsAnEarlierFileWithoutAReader) {
  const TempFile song(FileWith("soun", "drms"));
  Mp4Demux demux;
  ASSERT_TRUE(demux.InitForJudgement(song.wide().c_str()));
  EXPECT_FALSE(demux.InitForJudgement(std::unique_ptr<mmStreamReader>()));
  EXPECT_EQ(demux.GetContext(), nullptr);
}

TEST(JudgeFile, TellsUnreadableFromClear) {
  const TempFile clear(FileWith("soun", "mp4a"));
  const TempFile song(FileWith("soun", "drms"));
  const TempFile broken(Ftyp("isom"));
  EXPECT_EQ(mp4::JudgeFile(clear.wide().c_str()), mp4::HostVerdict::kClear);
  EXPECT_EQ(mp4::JudgeFile(song.wide().c_str()), mp4::HostVerdict::kProtected);
  EXPECT_EQ(mp4::JudgeFile(broken.wide().c_str()), mp4::HostVerdict::kUnreadable);
}
