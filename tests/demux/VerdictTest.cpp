// Judging passes over what cannot change the answer; these files hold it against a full opening,
// whole, cut anywhere, and with any byte changed.
#include <gtest/gtest.h>

#include "demux/FileInfoInterface.h"
#include "demux/Mp4Demux.h"
#include "demux/Verdict.h"
#include "fuzz/MemoryFile.h"
#include "tests/GoldenBoxes.h"

namespace {

using namespace fixture;

/// What decides the answer, of every record.
using Records = std::vector<std::array<std::uint32_t, 3>>;

Records RecordsOf(Mp4Demux* demux) {
  Records records;
  for (const auto& track : demux->GetContext()->tracks) {
    records.push_back({track->trackId, track->handlerType, track->format});
  }
  return records;
}

void ExpectAgreement(const unsigned char* bytes, std::size_t size, const std::string& what) {
  const fuzz::MemoryFile file(bytes, size);
  Mp4Demux full;
  Mp4Demux judged;
  const bool opened = full.Init(file.path());
  EXPECT_EQ(judged.InitForJudgement(file.path()), opened) << what;
  EXPECT_EQ(RecordsOf(&judged), RecordsOf(&full)) << what;
  const bool isProtected = opened && mp4::HasProtectedTrack(full.GetContext());
  EXPECT_EQ(JudgeMP4HaveDRM(file.path()), isProtected ? 1 : 0) << what;
  EXPECT_EQ(mp4::JudgeFile(file.path()), !opened       ? mp4::HostVerdict::kUnreadable
                                         : isProtected ? mp4::HostVerdict::kProtected
                                                       : mp4::HostVerdict::kClear)
      << what;
}

struct NamedFile {
  const char* name;
  Bytes bytes;
};

std::ostream& operator<<(std::ostream& out, const NamedFile& file) { return out << file.name; }

class VerdictAndOpening : public testing::TestWithParam<NamedFile> {};

TEST_P(VerdictAndOpening, AgreeOnTheWholeFileAndEveryTruncation) {
  const Bytes& whole = GetParam().bytes;
  for (std::size_t n = 0; n <= whole.size(); ++n) {
    ExpectAgreement(whole.data(), n, "cut to " + std::to_string(n));
  }
}

TEST_P(VerdictAndOpening, AgreeOnEveryChangedByte) {
  const Bytes& whole = GetParam().bytes;
  std::vector<unsigned char> changed(whole.data(), whole.data() + whole.size());
  for (std::size_t i = 0; i < changed.size(); ++i) {
    for (const unsigned char value : {0x00, 0x7F, 0x80, 0xFF}) {
      changed[i] = value;
      ExpectAgreement(changed.data(), changed.size(),
                      std::to_string(value) + " at " + std::to_string(i));
    }
    changed[i] = whole[i];
  }
}

const Bytes kMedia = Box("mdat", Bytes().Fill(8, 7));

INSTANTIATE_TEST_SUITE_P(
    Movies, VerdictAndOpening,
    testing::Values(
        NamedFile{"Clear", Ftyp("isom") + kMedia + Moov({golden::Film(), golden::Song("mp4a")})},
        NamedFile{"Protected", Ftyp("M4A ", {"mp42"}) + Moov({golden::Song("drms")}) + kMedia},
        NamedFile{"Fragments", Ftyp("iso5") + Moov({golden::Song("drms")}, golden::Mvex()) +
                                   golden::Moof() + kMedia + golden::Moof()},
        NamedFile{"Compressed", Box("moov", Cmov(Moov({golden::Film(), golden::Song("drms")})))},
        NamedFile{"Large",
                  SizedBox(1, "mdat", Bytes().Be64(40).Fill(24)) + Moov({golden::Song("ima4")})}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
