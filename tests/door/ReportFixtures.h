#pragma once

#include <memory>
#include <string>

#include "mp4judge/mp4judge.h"
#include "tests/Fixtures.h"
#include "tests/MovieFixtures.h"

namespace reports {

struct FreeReport {
  void operator()(mp4judge_report* report) const { mp4judge_report_free(report); }
};
using Report = std::unique_ptr<mp4judge_report, FreeReport>;

inline Report OfMemory(const Bytes& bytes, const mp4judge_options* options = nullptr) {
  return Report(mp4judge_inspect_memory(bytes.data(), bytes.size(), options));
}

/// Empty for null.
inline std::string Text(const char* text) { return text != nullptr ? text : ""; }
inline std::string Json(const Report& report) { return Text(mp4judge_report_json(report.get())); }

/// 00 11 22 ... ff.
inline Bytes KeyId() {
  Bytes id;
  for (unsigned i = 0; i < 16; ++i) id.Byte(i * 0x11);
  return id;
}

/// A "sinf" for "cenc", 80 bytes: "frma" 12, "schm" 20, "schi" 40 with "tenc" 32.
inline Bytes CencInfo(const char* original = "mp4a") {
  const Bytes tenc = FullBox("tenc", 0, 0, Bytes().Be16(0).Byte(1).Byte(8) + KeyId());
  return Box("sinf", Box("frma", Bytes().Text(original)) +
                         FullBox("schm", 0, 0, Bytes().Text("cenc").Be32(0x10000)) +
                         Box("schi", tenc));
}

inline fixture::Track Song(const char* format, const Bytes& atoms = {}) {
  return {.format = format, .handler = "soun", .atoms = atoms};
}

inline Bytes FileWith(const std::vector<fixture::Track>& tracks, const Bytes& more = {}) {
  return fixture::Ftyp("isom") + fixture::Moov(tracks, more);
}

inline Bytes ClearFile() { return FileWith({Song("mp4a")}); }
inline Bytes CencFile() { return FileWith({Song("enca", CencInfo())}); }

}  // namespace reports
