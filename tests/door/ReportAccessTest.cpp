#include <gtest/gtest.h>

#include <cstring>

#include "tests/door/ReportFixtures.h"

using namespace reports;

namespace {

Bytes Pssh() {
  const Bytes system = Bytes().Be32(0xEDEF8BA9).Be32(0x79D64ACE).Be32(0xA3C827DC).Be32(0xD51D21ED);
  return FullBox("pssh", 1, 0, system + Bytes().Be32(1) + KeyId() + Bytes().Be32(3).Text("abc"));
}

}  // namespace

TEST(ReportAccess, TellsTracksEntriesAndSchemes) {
  const Report report = OfMemory(FileWith({Song("mp4a"), Song("enca", CencInfo())}));
  ASSERT_EQ(mp4judge_report_track_count(report.get()), 2u);
  EXPECT_EQ(mp4judge_report_track(report.get(), 0)->is_protected, 0);
  const mp4judge_track* track = mp4judge_report_track(report.get(), 1);
  EXPECT_EQ(track->id, 1u);
  EXPECT_STREQ(track->handler, "soun");
  EXPECT_EQ(track->is_protected, 1);
  ASSERT_EQ(track->entry_count, 1u);
  const mp4judge_entry* entry = mp4judge_report_entry(report.get(), 1, 0);
  EXPECT_STREQ(entry->format, "enca");
  EXPECT_STREQ(entry->original_format, "mp4a");
  EXPECT_EQ(entry->is_protected, 1);
  ASSERT_EQ(entry->scheme_count, 1u);
  const mp4judge_scheme* scheme = mp4judge_report_entry_scheme(report.get(), 1, 0, 0);
  EXPECT_STREQ(scheme->type, "cenc");
  EXPECT_EQ(scheme->version, 0x10000u);
  EXPECT_EQ(scheme->uri, nullptr);
  EXPECT_STREQ(scheme->original_format, "mp4a");
  EXPECT_EQ(scheme->default_protected, 1);
  EXPECT_EQ(scheme->iv_size, 8u);
  EXPECT_EQ(scheme->crypt_blocks, 0u);
  EXPECT_EQ(scheme->constant_iv, nullptr);
  EXPECT_EQ(std::memcmp(scheme->default_key_id, KeyId().data(), 16), 0);
  ASSERT_EQ(mp4judge_report_scheme_count(report.get()), 1u);
  EXPECT_STREQ(mp4judge_report_scheme(report.get(), 0), "cenc");
}

TEST(ReportAccess, WhatIsNotSaidIsNull) {
  const Report report = OfMemory(ClearFile());
  EXPECT_EQ(mp4judge_report_reason(report.get()), nullptr);
  EXPECT_EQ(mp4judge_report_path(report.get()), nullptr);
  EXPECT_EQ(mp4judge_report_host_difference(report.get()), nullptr);
  const mp4judge_entry* entry = mp4judge_report_entry(report.get(), 0, 0);
  EXPECT_EQ(entry->original_format, nullptr);
  EXPECT_EQ(entry->scheme_count, 0u);
  const Report bare = OfMemory(FileWith({Song("mp4a", Box("sinf"))}));
  const mp4judge_scheme* scheme = mp4judge_report_entry_scheme(bare.get(), 0, 0, 0);
  ASSERT_NE(scheme, nullptr);
  EXPECT_EQ(scheme->type, nullptr);
  EXPECT_EQ(scheme->original_format, nullptr);
  EXPECT_EQ(scheme->default_protected, -1);
  EXPECT_EQ(scheme->default_key_id, nullptr);
}

TEST(ReportAccess, BehindTheLastIsNull) {
  const Report report = OfMemory(FileWith({Song("mp4a"), Song("enca", CencInfo())}, Pssh()));
  EXPECT_EQ(mp4judge_report_track(report.get(), 2), nullptr);
  EXPECT_EQ(mp4judge_report_entry(report.get(), 0, 1), nullptr);
  EXPECT_EQ(mp4judge_report_entry(report.get(), 2, 0), nullptr);
  EXPECT_EQ(mp4judge_report_entry(report.get(), SIZE_MAX, 0), nullptr);
  EXPECT_EQ(mp4judge_report_entry_scheme(report.get(), 0, 0, 0), nullptr);
  EXPECT_EQ(mp4judge_report_entry_scheme(report.get(), 1, 0, 1), nullptr);
  EXPECT_EQ(mp4judge_report_entry_scheme(report.get(), 1, 1, 0), nullptr);
  EXPECT_EQ(mp4judge_report_item(report.get(), 0), nullptr);
  EXPECT_EQ(mp4judge_report_system(report.get(), 1), nullptr);
  EXPECT_EQ(mp4judge_report_evidence(report.get(), mp4judge_report_evidence_count(report.get())),
            nullptr);
  EXPECT_EQ(mp4judge_report_problem(report.get(), mp4judge_report_problem_count(report.get())),
            nullptr);
  EXPECT_EQ(mp4judge_report_note(report.get(), mp4judge_report_note_count(report.get())), nullptr);
  EXPECT_EQ(mp4judge_report_scheme(report.get(), 1), nullptr);
}

TEST(ReportAccess, TellsSystemsAndTheirKeyIds) {
  const Report report = OfMemory(FileWith({Song("mp4a")}, Pssh()));
  ASSERT_EQ(mp4judge_report_system_count(report.get()), 1u);
  const mp4judge_system* system = mp4judge_report_system(report.get(), 0);
  EXPECT_EQ(system->id[0], 0xED);
  EXPECT_EQ(system->id[15], 0xED);
  EXPECT_NE(system->name, nullptr);
  ASSERT_EQ(system->key_id_count, 1u);
  EXPECT_EQ(std::memcmp(system->key_ids, KeyId().data(), 16), 0);
  EXPECT_EQ(system->payload_size, 3u);
  EXPECT_EQ(Text(system->box_path).substr(0, 9), "moov/pssh");
  EXPECT_EQ(mp4judge_report_note_count(report.get()), 1u);
}

TEST(ReportAccess, TellsEvidenceWithItsPlace) {
  const Report report = OfMemory(CencFile());
  ASSERT_GT(mp4judge_report_evidence_count(report.get()), 0u);
  const mp4judge_evidence* first = mp4judge_report_evidence(report.get(), 0);
  EXPECT_STREQ(first->box_path, "moov/trak[1]/mdia/minf/stbl/stsd/enca[1]");
  // "ftyp" 20, "moov" 8, "mvhd" 108, "trak" 8, "tkhd" 92, "mdia" 8, "mdhd" 32, "hdlr" 40,
  // "minf" 8, "smhd" 16, "dinf" 36, "stbl" 8, "stsd" 16.
  EXPECT_EQ(first->offset, 400u);
  EXPECT_EQ(first->track, 1);
  EXPECT_EQ(first->item, -1);
  EXPECT_STREQ(first->format, "enca");
  EXPECT_STREQ(first->scheme, "cenc");
  EXPECT_NE(Text(first->text), "");
}

TEST(ReportAccess, AnOffsetInsideACompressedMovieIsNone) {
  const Bytes movie = fixture::Moov({Song("enca", CencInfo())});
  const Report report = OfMemory(fixture::Ftyp("qt  ") + Box("moov", fixture::Cmov(movie)));
  EXPECT_EQ(mp4judge_report_verdict(report.get()), MP4JUDGE_PROTECTED);
  ASSERT_GT(mp4judge_report_evidence_count(report.get()), 0u);
  EXPECT_EQ(mp4judge_report_evidence(report.get(), 0)->offset, MP4JUDGE_NO_OFFSET);
}

TEST(ReportAccess, TellsProblems) {
  const Report report = OfMemory(CencFile().Cut(300));
  ASSERT_GT(mp4judge_report_problem_count(report.get()), 0u);
  const mp4judge_problem* problem = mp4judge_report_problem(report.get(), 0);
  EXPECT_NE(Text(problem->box_path), "");
  EXPECT_NE(Text(problem->text), "");
  EXPECT_EQ(problem->may_hide, 1);
  EXPECT_NE(mp4judge_report_reason(report.get()), nullptr);
}

TEST(ReportAccess, TellsHowFarTheInspectionWent) {
  const Report whole = OfMemory(ClearFile());
  EXPECT_EQ(mp4judge_report_everything(whole.get()), 1);
  EXPECT_EQ(mp4judge_report_fragments(whole.get()), 0u);
  const Bytes fragment = Box("moof", FullBox("mfhd", 0, 0, Bytes().Be32(1)));
  Bytes many = ClearFile();
  for (int i = 0; i < 9; ++i) many.Append(fragment);
  const Report some = OfMemory(many);
  EXPECT_EQ(mp4judge_report_everything(some.get()), 0);
  EXPECT_EQ(mp4judge_report_fragments(some.get()), 4u);
  mp4judge_options options = MP4JUDGE_OPTIONS_DEFAULT;
  options.everything = 1;
  const Report all = OfMemory(many, &options);
  EXPECT_EQ(mp4judge_report_everything(all.get()), 1);
  EXPECT_EQ(mp4judge_report_fragments(all.get()), 9u);
}

TEST(ReportAccess, TellsTheHostsAnswer) {
  const Report clear = OfMemory(ClearFile());
  EXPECT_EQ(mp4judge_report_host_answer(clear.get()), 0);
  EXPECT_EQ(mp4judge_report_host_reads(clear.get()), 1);
  const Report drms = OfMemory(FileWith({Song("drms")}));
  EXPECT_EQ(mp4judge_report_host_answer(drms.get()), 1);
  EXPECT_EQ(mp4judge_report_host_reads(drms.get()), 1);
  EXPECT_EQ(mp4judge_report_host_difference(drms.get()), nullptr);
  const Report none = OfMemory(fixture::Ftyp("isom"));
  EXPECT_EQ(mp4judge_report_host_answer(none.get()), 0);
  EXPECT_EQ(mp4judge_report_host_reads(none.get()), 0);
}

TEST(ReportAccess, ANullReportSaysNothing) {
  EXPECT_EQ(mp4judge_report_verdict(nullptr), MP4JUDGE_UNDETERMINED);
  EXPECT_EQ(mp4judge_report_error(nullptr), MP4JUDGE_ERROR_ARGUMENT);
  EXPECT_EQ(mp4judge_report_errno(nullptr), 0);
  EXPECT_EQ(mp4judge_report_reason(nullptr), nullptr);
  EXPECT_EQ(mp4judge_report_path(nullptr), nullptr);
  uint64_t offset = 1;
  EXPECT_EQ(mp4judge_report_needs(nullptr, &offset, nullptr), 0);
  EXPECT_EQ(offset, 0u);
  EXPECT_EQ(mp4judge_report_scheme_count(nullptr), 0u);
  EXPECT_EQ(mp4judge_report_scheme(nullptr, 0), nullptr);
  EXPECT_EQ(mp4judge_report_track_count(nullptr), 0u);
  EXPECT_EQ(mp4judge_report_track(nullptr, 0), nullptr);
  EXPECT_EQ(mp4judge_report_entry(nullptr, 0, 0), nullptr);
  EXPECT_EQ(mp4judge_report_entry_scheme(nullptr, 0, 0, 0), nullptr);
  EXPECT_EQ(mp4judge_report_item_count(nullptr), 0u);
  EXPECT_EQ(mp4judge_report_item(nullptr, 0), nullptr);
  EXPECT_EQ(mp4judge_report_system_count(nullptr), 0u);
  EXPECT_EQ(mp4judge_report_system(nullptr, 0), nullptr);
  EXPECT_EQ(mp4judge_report_evidence_count(nullptr), 0u);
  EXPECT_EQ(mp4judge_report_evidence(nullptr, 0), nullptr);
  EXPECT_EQ(mp4judge_report_problem_count(nullptr), 0u);
  EXPECT_EQ(mp4judge_report_problem(nullptr, 0), nullptr);
  EXPECT_EQ(mp4judge_report_note_count(nullptr), 0u);
  EXPECT_EQ(mp4judge_report_note(nullptr, 0), nullptr);
  EXPECT_EQ(mp4judge_report_fragments(nullptr), 0u);
  EXPECT_EQ(mp4judge_report_everything(nullptr), 0);
  EXPECT_EQ(mp4judge_report_host_answer(nullptr), -1);
  EXPECT_EQ(mp4judge_report_host_reads(nullptr), -1);
  EXPECT_EQ(mp4judge_report_host_difference(nullptr), nullptr);
  EXPECT_EQ(mp4judge_report_json(nullptr), nullptr);
}
