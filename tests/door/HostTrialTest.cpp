#include <gtest/gtest.h>

#include "door/HostTrial.h"
#include "io/FourCC.h"
#include "tests/door/ReportFixtures.h"

using mp4::BoxId;
using mp4::BoxTree;
using mp4::CachedSource;
using mp4::FourCC;
using mp4::HostCopy;
using mp4::HostTrial;
using mp4::kNoBox;
using mp4::kRootBox;
using mp4::MemorySource;

namespace {

HostCopy CopyForTrial(const Bytes& bytes) {
  MemorySource memory(bytes.data(), bytes.size());
  CachedSource cache(&memory);
  return HostCopy::Of(&cache, UINT64_MAX, 1 << 20);
}

}  // namespace

TEST(HostTrial, AnswersLikeTheHost) {
  EXPECT_EQ(HostTrial(CopyForTrial(reports::ClearFile())).Answer({}), MP4JUDGE_HOST_CLEAR);
  const Bytes drms = reports::FileWith({reports::Song("drms")});
  EXPECT_EQ(HostTrial(CopyForTrial(drms)).Answer({}), MP4JUDGE_HOST_PROTECTED);
  EXPECT_EQ(HostTrial(CopyForTrial(Box("moov", Bytes().Fill(50)))).Answer({}),
            MP4JUDGE_HOST_UNREADABLE);
}

TEST(HostTrial, ChangesLastForOneAnswer) {
  HostTrial trial(CopyForTrial(reports::ClearFile()));
  const std::vector<unsigned char> before = trial.Copy().bytes;
  // The format of the entry: "ftyp" 20, and 384 in "moov".
  EXPECT_EQ(trial.Answer({{404, {'d', 'r', 'm', 'x'}}, {407, {'s'}}}), MP4JUDGE_HOST_PROTECTED);
  EXPECT_EQ(trial.Copy().bytes, before);
  EXPECT_EQ(trial.Answer({}), MP4JUDGE_HOST_CLEAR);
}

TEST(HostTrial, ChangesBehindTheEndAreCut) {
  HostTrial trial(CopyForTrial(reports::ClearFile()));
  const std::uint64_t size = trial.Copy().bytes.size();
  EXPECT_EQ(trial.Answer({{size - 1, {0, 0, 0}}, {size + 1, {1}}}), MP4JUDGE_HOST_CLEAR);
  EXPECT_EQ(trial.Copy().bytes.size(), size);
}

TEST(HostTrial, WithoutABoxTheHostPassesOverIt) {
  HostTrial trial(CopyForTrial(reports::FileWith({reports::Song("drms")})));
  const BoxId movie = trial.Tree().Child(kRootBox, FourCC("moov"));
  EXPECT_EQ(trial.Answer(trial.Without({movie})), MP4JUDGE_HOST_UNREADABLE);
  const auto changes = trial.Without({movie});
  ASSERT_EQ(changes.size(), 1u);
  EXPECT_EQ(changes[0].offset, 20u);
  EXPECT_EQ(std::string(changes[0].bytes.begin() + 4, changes[0].bytes.end()), "free");
}

TEST(HostTrial, InContainersThatTheHostEntersABoxBecomesAKnownOne) {
  const Bytes fragment = Box("moof", Box("traf", Box("abcd")));
  HostTrial trial(CopyForTrial(reports::FileWith({}, Box("mvex", Box("abcd"))) + fragment));
  BoxTree& tree = trial.Tree();
  const auto typeFor = [&](BoxId box) {
    const auto bytes = trial.Without({box}).front().bytes;
    return std::string(bytes.begin() + 4, bytes.end());
  };
  const BoxId extends = tree.Child(tree.Child(kRootBox, FourCC("moov")), FourCC("mvex"));
  EXPECT_EQ(typeFor(tree.FirstChild(extends)), "mehd");
  const BoxId track = tree.FirstChild(tree.Child(kRootBox, FourCC("moof")));
  EXPECT_EQ(typeFor(track), "mfhd");
  EXPECT_EQ(typeFor(tree.FirstChild(track)), "tfhd");
}

TEST(HostTrial, NothingChangesInsideACompressedMovie) {
  const Bytes movie = fixture::Moov({reports::Song("mp4a")});
  HostTrial trial(CopyForTrial(fixture::Ftyp("qt  ") + Box("moov", fixture::Cmov(movie))));
  BoxTree& tree = trial.Tree();
  BoxId box = tree.Child(kRootBox, FourCC("moov"));
  while (box != kNoBox && tree.At(box).space == 0) {
    const BoxId child = tree.FirstChild(box);
    box = child != kNoBox ? child : tree.Next(box);
  }
  ASSERT_NE(box, kNoBox);
  EXPECT_TRUE(trial.Without({box}).empty());
}

TEST(HostTrial, ManyTrialsAreSpentSomeTime) {
  HostTrial trial(CopyForTrial(reports::ClearFile()));
  int answers = 0;
  while (!trial.IsSpent() && answers < 1000000) {
    trial.Answer({});
    ++answers;
  }
  EXPECT_GT(answers, 200);
  EXPECT_LT(answers, 1000000);
  EXPECT_EQ(trial.Answer({}), MP4JUDGE_HOST_UNREADABLE);
}
