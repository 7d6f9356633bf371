#include <gtest/gtest.h>

#include "inspect/HiddenSchemes.h"
#include "tests/inspect/ProtectionFixtures.h"

namespace {

namespace p = protection;

/// What is found in the payload of a box.
std::string Found(const Bytes& payload, bool knownSchemes = false) {
  const Bytes file = Box("zzzz", payload);
  mp4::MemorySource memory(file.data(), file.size());
  mp4::CachedSource source(&memory);
  mp4::BoxTree tree(&source);
  return mp4::FindHiddenScheme(&tree, tree.FirstChild(mp4::kRootBox), knownSchemes);
}

bool IsPart(const Bytes& box) {
  mp4::MemorySource memory(box.data(), box.size());
  mp4::CachedSource source(&memory);
  mp4::BoxTree tree(&source);
  return mp4::IsPartOfScheme(&tree, tree.FirstChild(mp4::kRootBox));
}

TEST(HiddenSchemes, TheCharactersOfASchemeAreFoundAnywhere) {
  for (const char* type : {"sinf", "tenc", "schm", "schi"})
    EXPECT_EQ(type, Found(Bytes().Fill(3, 0xC3).Text(type).Fill(9, 0xC3)));
  for (const char* type : {"sinx", "sin", "frma"})
    EXPECT_EQ("", Found(Bytes().Fill(3, 0xC3).Text(type).Fill(9, 0xC3)));
  EXPECT_EQ("uuid", Found(Bytes().Fill(5) + p::PiffTrackType()));
  EXPECT_EQ("", Found(Bytes().Fill(5) + p::PiffTrackType().Cut(15)));
}

TEST(HiddenSchemes, ThoseThatBelongToSomethingElseAreLeftOut) {
  EXPECT_EQ("", Found(Bytes().Text("schmschi"), true));
  EXPECT_EQ("sinf", Found(Bytes().Text("schmsinf"), true));
}

TEST(HiddenSchemes, AnEntryForProtectedMediaIsFoundByItsHeader) {
  for (const char* type : {"encv", "enca", "encu", "drms", "p608", "aavd"}) {
    EXPECT_EQ(type, Found(Bytes().Fill(5).Append(Box(type, Bytes().Fill(8))).Fill(4)));
    // One byte too small, and one byte longer than what is left.
    EXPECT_EQ("", Found(Bytes().Fill(5).Append(Box(type, Bytes().Fill(7))).Fill(4)));
    EXPECT_EQ(type, Found(Bytes().Fill(5).Append(SizedBox(16, type, Bytes().Fill(8)))));
    EXPECT_EQ("", Found(Bytes().Fill(5).Append(SizedBox(17, type, Bytes().Fill(8)))));
  }
  EXPECT_EQ("", Found(Bytes().Text("encapsulated: drms")));
}

TEST(HiddenSchemes, WhatLiesAcrossPiecesIsFound) {
  for (std::size_t at = 16380; at < 16400; ++at) {
    EXPECT_EQ("sinf", Found(Bytes().Fill(at, 1).Text("sinf").Fill(9)));
    EXPECT_EQ("uuid", Found(Bytes().Fill(at, 1) + p::PiffTrackType()));
    EXPECT_EQ("encv", Found(Bytes().Fill(at, 1) + Box("encv", Bytes().Fill(8))));
  }
}

TEST(HiddenSchemes, PartsOfASchemeAreTold) {
  for (const char* type : {"schm", "schi", "tenc", "iKMS", "iSFM", "odkm", "adkm", "8id ", "marl",
                           "mkid", "ohdr", "key ", "iviv", "priv", "imif", "pssh"})
    EXPECT_TRUE(IsPart(Box(type))) << type;
  for (const Bytes& type : {p::PiffTrackType(), p::PiffSampleType(), p::PiffSystemType()})
    EXPECT_TRUE(IsPart(Box("uuid", type)));
  for (const char* type : {"avcC", "frma", "pinf", "btrt", "uuid"})
    EXPECT_FALSE(IsPart(Box(type, Bytes().Fill(20)))) << type;
}

}  // namespace
