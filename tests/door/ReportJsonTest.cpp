#include <gtest/gtest.h>

#include "door/ReportJson.h"
#include "tests/door/ReportFixtures.h"

using namespace mp4;

TEST(ReportJson, NothingSaidIsNullOrEmpty) {
  EXPECT_EQ(ReportJson({}),
            R"({"schema":"mp4judge-report/1","path":null,"verdict":"undetermined","schemes":[],)"
            R"("host_answer":null,"reason":null,"tracks":[],"systems":[],"evidence":[],)"
            R"("problems":[],"items":[],"notes":[],"fragments":0,"everything":false,)"
            R"("host_reads":null,"host_difference":null,"path_bytes":null,"error":null})");
}

TEST(ReportJson, HasEverythingInItsOrder) {
  Judged judged;
  judged.path = "a\xFF";
  judged.host = MP4JUDGE_HOST_CLEAR;
  judged.hostDifference = "why";
  judged.error = MP4JUDGE_ERROR_NEEDS_BYTES;
  mp4::Report& report = judged.report;
  report.verdict = ProtectionVerdict::kProtected;
  report.schemes = {"cenc", "itun"};
  report.reason = "because";
  Id16 id{};
  id[0] = 0xAB;
  ReportScheme scheme{"cenc", 7, "uri", "mp4a", true, id, 8, 1, 9, {0x01, 0xF0}};
  report.tracks = {{3, "soun", true, {{"enca", "mp4a", true, {scheme}}, {"mp4a", "", false, {}}}}};
  report.systems = {{id, "name", {id}, 5, "moov/pssh[1]"}};
  report.evidence = {{"moov", 8, 3, 4, "enca", "cenc", "text"}, {"moov", {}, {}, {}, "", "", ""}};
  report.problems = {{"moof", 9, "bad", true}};
  report.items = {{1, "hvc1", true, "cenc"}, {2, "", false, ""}};
  report.notes = {"note"};
  report.fragments = 2;
  report.everything = true;
  report.needed = NeededRange{10, 20};
  EXPECT_EQ(
      ReportJson(judged),
      R"({"schema":"mp4judge-report/1","path":"a)"
      "\xEF\xBF\xBD"
      R"(","verdict":"protected","schemes":["cenc","itun"],"host_answer":0,"reason":"because",)"
      R"("tracks":[{"id":3,"handler":"soun","protected":true,"entries":[)"
      R"({"format":"enca","original_format":"mp4a","protected":true,"scheme":"cenc",)"
      R"("default_protected":true,"default_key_id":"ab000000-0000-0000-0000-000000000000",)"
      R"("schemes":[{"scheme":"cenc","version":7,"uri":"uri","original_format":"mp4a",)"
      R"("default_protected":true,"default_key_id":"ab000000-0000-0000-0000-000000000000",)"
      R"("iv_size":8,"crypt_blocks":1,"skip_blocks":9,"constant_iv":"01f0"}]},)"
      R"({"format":"mp4a","original_format":null,"protected":false,"scheme":null,)"
      R"("default_protected":null,"default_key_id":null,"schemes":[]}]}],)"
      R"("systems":[{"id":"ab000000-0000-0000-0000-000000000000","name":"name",)"
      R"("key_ids":["ab000000-0000-0000-0000-000000000000"],"payload_size":5,)"
      R"("box_path":"moov/pssh[1]"}],)"
      R"("evidence":[{"box_path":"moov","offset":8,"track":3,"item":4,"format":"enca",)"
      R"("scheme":"cenc","text":"text"},{"box_path":"moov","offset":null,"track":null,)"
      R"("item":null,"format":null,"scheme":null,"text":""}],)"
      R"("problems":[{"box_path":"moof","offset":9,"text":"bad","may_hide":true}],)"
      R"("items":[{"id":1,"type":"hvc1","protected":true,"scheme":"cenc"},)"
      R"({"id":2,"type":null,"protected":false,"scheme":null}],"notes":["note"],)"
      R"("fragments":2,"everything":true,"host_reads":true,"host_difference":"why",)"
      R"("path_bytes":"61ff","error":{"code":6,"text":"more bytes are needed","errno":0,)"
      R"("offset":10,"size":20}})");
}

TEST(ReportJson, TheHostsThreeAnswersAreTwoAndWhetherItReads) {
  Judged judged;
  judged.host = MP4JUDGE_HOST_PROTECTED;
  EXPECT_NE(ReportJson(judged).find(R"("host_answer":1,)"), std::string::npos);
  EXPECT_NE(ReportJson(judged).find(R"("host_reads":true,)"), std::string::npos);
  judged.host = MP4JUDGE_HOST_UNREADABLE;
  EXPECT_NE(ReportJson(judged).find(R"("host_answer":0,)"), std::string::npos);
  EXPECT_NE(ReportJson(judged).find(R"("host_reads":false,)"), std::string::npos);
}

TEST(ReportJson, NamesVerdictsLikeTheInterface) {
  EXPECT_STREQ(NameOf(ProtectionVerdict::kClear), mp4judge_verdict_name(MP4JUDGE_CLEAR));
  EXPECT_STREQ(NameOf(ProtectionVerdict::kProtected), mp4judge_verdict_name(MP4JUDGE_PROTECTED));
  EXPECT_STREQ(NameOf(ProtectionVerdict::kUndetermined),
               mp4judge_verdict_name(MP4JUDGE_UNDETERMINED));
}
