#include <gtest/gtest.h>

#include <set>

#include "io/FourCC.h"
#include "samples/SampleProblem.h"

using mp4::SampleFault;

TEST(SampleProblem, IsALineOfPlainWords) {
  EXPECT_EQ("stsz is missing", mp4::TextOf({SampleFault::kMissing, mp4::FourCC("stsz"), 0, 0, 40}));
  EXPECT_EQ("stco holds fewer rows than it says (says 9, there are 2)",
            mp4::TextOf({SampleFault::kFewerRows, mp4::FourCC("stco"), 9, 2, 0}));
  EXPECT_EQ("\\xA9xyz ends before its own fields",
            mp4::TextOf({SampleFault::kCut, mp4::FourCC("\251xyz"), 3, 3, 0}))
      << "numbers that agree say nothing";
}

TEST(SampleProblem, EachFaultHasWordsOfItsOwn) {
  std::set<std::string> texts;
  const int last = static_cast<int>(SampleFault::kGroupsUnreadable);
  for (int fault = 0; fault <= last; ++fault) {
    texts.insert(mp4::TextOf({static_cast<SampleFault>(fault), mp4::FourCC("xxxx"), 0, 0, 0}));
  }
  EXPECT_EQ(static_cast<std::size_t>(last) + 1, texts.size());
  EXPECT_EQ(0U, texts.count("xxxx "));
}

TEST(SampleProblem, AHundredAreKeptAndTheOthersCounted) {
  mp4::SampleProblems problems;
  for (unsigned i = 0; i < 103; ++i) problems.Note(SampleFault::kMissing, i, 1, 2, 3);
  ASSERT_EQ(100U, problems.Kept().size());
  EXPECT_EQ(3U, problems.Dropped());
  EXPECT_EQ(99U, problems.Kept()[99].box);
  EXPECT_EQ(1U, problems.Kept()[0].says);
  EXPECT_EQ(2U, problems.Kept()[0].holds);
  EXPECT_EQ(3U, problems.Kept()[0].offset);
}
