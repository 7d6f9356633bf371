#include "door/ReportJson.h"

#include "door/JsonWriter.h"
#include "inspect/Words.h"

namespace mp4 {

namespace {

/// The form of the text. A new number comes with a change that old readers would stumble over; new
/// members do not.
constexpr const char* kSchema = "mp4judge-report/1";

std::string Hex(std::string_view bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text.push_back(kDigits[byte >> 4]);
    text.push_back(kDigits[byte & 15]);
  }
  return text;
}

std::string Hex(const std::vector<std::uint8_t>& bytes) {
  return Hex(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

/// Writes the members of one report.
class Members {
 public:
  explicit Members(JsonWriter* json) : json_(json) {}

  void Head(const Judged& judged);
  void Body(const Report& report);
  void Rest(const Judged& judged);

 private:
  void TextOrNull(const char* name, const std::string& text) {
    if (!text.empty()) return json_->Member(name, text);
    json_->Name(name);
    json_->Null();
  }
  template <class T>
  void NumberOrNull(const char* name, const std::optional<T>& number) {
    if (number) return json_->Member(name, *number);
    json_->Name(name);
    json_->Null();
  }
  void Flag(const char* name, const std::optional<bool>& flag) {
    json_->Name(name);
    if (flag) return json_->Bool(*flag);
    json_->Null();
  }
  void Texts(const char* name, const std::vector<std::string>& texts) {
    json_->Name(name);
    json_->BeginArray();
    for (const std::string& text : texts) json_->String(text);
    json_->EndArray();
  }
  /// A list of objects, whose members One writes.
  template <class T>
  void Objects(const char* name, const std::vector<T>& all) {
    json_->Name(name);
    json_->BeginArray();
    for (const T& one : all) {
      json_->BeginObject();
      One(one);
      json_->EndObject();
    }
    json_->EndArray();
  }

  void One(const ReportTrack& track);
  void One(const ReportEntry& entry);
  void One(const ReportScheme& scheme);
  void One(const ReportItem& item);
  void One(const ReportSystem& system);
  void One(const mp4::Evidence& evidence);
  void One(const ReportProblem& problem);

  JsonWriter* json_;
};

void Members::Head(const Judged& judged) {
  std::optional<std::uint32_t> answer;
  if (judged.host) answer = *judged.host == MP4JUDGE_HOST_PROTECTED ? 1U : 0U;
  json_->Member("schema", kSchema);
  json_->Name("path");
  if (judged.path) {
    json_->String(*judged.path);
  } else {
    json_->Null();
  }
  json_->Member("verdict", NameOf(judged.report.verdict));
  Texts("schemes", judged.report.schemes);
  NumberOrNull("host_answer", answer);
  TextOrNull("reason", judged.report.reason);
}

void Members::Body(const Report& report) {
  Objects("tracks", report.tracks);
  Objects("systems", report.systems);
  Objects("evidence", report.evidence);
  Objects("problems", report.problems);
  Objects("items", report.items);
  Texts("notes", report.notes);
  json_->Member("fragments", report.fragments);
  json_->Member("everything", report.everything);
}

void Members::Rest(const Judged& judged) {
  std::optional<bool> reads;
  if (judged.host) reads = *judged.host != MP4JUDGE_HOST_UNREADABLE;
  Flag("host_reads", reads);
  TextOrNull("host_difference", judged.hostDifference);
  const std::string path = judged.path.value_or("");
  TextOrNull("path_bytes", IsUtf8(path) ? "" : Hex(path));
  json_->Name("error");
  if (judged.error == MP4JUDGE_OK) return json_->Null();
  json_->BeginObject();
  json_->Member("code", static_cast<std::uint32_t>(judged.error));
  json_->Member("text", mp4judge_error_text(judged.error));
  json_->Member("errno", std::int64_t{judged.systemError});
  const auto& needed = judged.report.needed;
  NumberOrNull("offset", needed ? std::optional(needed->offset) : std::nullopt);
  NumberOrNull("size", needed ? std::optional(needed->size) : std::nullopt);
  json_->EndObject();
}

void Members::One(const ReportTrack& track) {
  json_->Member("id", track.id);
  TextOrNull("handler", track.handler);
  json_->Member("protected", track.isProtected);
  Objects("entries", track.entries);
}

/// The first scheme's facts stand beside the format, since one is the rule.
void Members::One(const ReportEntry& entry) {
  static const ReportScheme kNone;
  const ReportScheme& first = entry.schemes.empty() ? kNone : entry.schemes.front();
  json_->Member("format", entry.format);
  TextOrNull("original_format", entry.originalFormat);
  json_->Member("protected", entry.isProtected);
  TextOrNull("scheme", first.type);
  Flag("default_protected", first.defaultProtected);
  TextOrNull("default_key_id", first.defaultKeyId ? IdText(*first.defaultKeyId) : "");
  Objects("schemes", entry.schemes);
}

void Members::One(const ReportScheme& scheme) {
  TextOrNull("scheme", scheme.type);
  json_->Member("version", scheme.version);
  TextOrNull("uri", scheme.uri);
  TextOrNull("original_format", scheme.originalFormat);
  Flag("default_protected", scheme.defaultProtected);
  TextOrNull("default_key_id", scheme.defaultKeyId ? IdText(*scheme.defaultKeyId) : "");
  json_->Member("iv_size", std::uint32_t{scheme.ivSize});
  json_->Member("crypt_blocks", std::uint32_t{scheme.cryptBlocks});
  json_->Member("skip_blocks", std::uint32_t{scheme.skipBlocks});
  TextOrNull("constant_iv", Hex(scheme.constantIv));
}

void Members::One(const ReportItem& item) {
  json_->Member("id", item.id);
  TextOrNull("type", item.type);
  json_->Member("protected", item.isProtected);
  TextOrNull("scheme", item.scheme);
}

void Members::One(const ReportSystem& system) {
  json_->Member("id", IdText(system.id));
  TextOrNull("name", system.name);
  json_->Name("key_ids");
  json_->BeginArray();
  for (const Id16& id : system.keyIds) json_->String(IdText(id));
  json_->EndArray();
  json_->Member("payload_size", system.payloadSize);
  json_->Member("box_path", system.boxPath);
}

void Members::One(const mp4::Evidence& evidence) {
  json_->Member("box_path", evidence.boxPath);
  NumberOrNull("offset", evidence.offset);
  NumberOrNull("track", evidence.track);
  NumberOrNull("item", evidence.item);
  TextOrNull("format", evidence.format);
  TextOrNull("scheme", evidence.scheme);
  json_->Member("text", evidence.text);
}

void Members::One(const ReportProblem& problem) {
  json_->Member("box_path", problem.boxPath);
  NumberOrNull("offset", problem.offset);
  json_->Member("text", problem.text);
  json_->Member("may_hide", problem.mayHide);
}

}  // namespace

const char* NameOf(ProtectionVerdict verdict) {
  switch (verdict) {
    case ProtectionVerdict::kClear:
      return "clear";
    case ProtectionVerdict::kProtected:
      return "protected";
    case ProtectionVerdict::kUndetermined:
      break;
  }
  return "undetermined";
}

std::string ReportJson(const Judged& judged) {
  std::string text;
  JsonWriter json(&text);
  Members members(&json);
  json.BeginObject();
  members.Head(judged);
  members.Body(judged.report);
  members.Rest(judged);
  json.EndObject();
  return text;
}

}  // namespace mp4
