#include "door/JsonWriter.h"
#include "door/MovieInfo.h"

namespace mp4 {

namespace {

void Text(const char* name, const std::string& value, JsonWriter* json) {
  if (!value.empty()) json->Member(name, value);
}

void Count(const char* name, std::uint64_t value, JsonWriter* json) {
  if (value != 0) json->Member(name, value);
}

void Real(const char* name, double value, JsonWriter* json) {
  json->Name(name);
  json->Real(value);
}

void Texts(const char* name, const std::vector<std::string>& values, JsonWriter* json) {
  if (values.empty()) return;
  json->Name(name);
  json->BeginArray();
  for (const std::string& value : values) json->String(value);
  json->EndArray();
}

/// A list of objects, left out when it is empty.
template <class Element, class Write>
void Objects(const char* name, const std::vector<Element>& elements, JsonWriter* json,
             Write&& write) {
  if (elements.empty()) return;
  json->Name(name);
  json->BeginArray();
  for (const Element& element : elements) {
    json->BeginObject();
    write(element);
    json->EndObject();
  }
  json->EndArray();
}

void WriteCodec(const CodecInfo& codec, JsonWriter* json) {
  json->Member("format", codec.format);
  Text("originalFormat", codec.original, json);
  Text("codec", codec.codec, json);
  Text("profile", codec.profile, json);
  Text("level", codec.level, json);
  Text("tier", codec.tier, json);
  Text("codecs", codec.parameter, json);
  Count("bitDepth", codec.bitDepth, json);
  Text("chromaFormat", codec.chroma, json);
  Count("width", codec.width, json);
  Count("height", codec.height, json);
  if (codec.sampleRate > 0) Real("sampleRate", codec.sampleRate, json);
  Count("channels", codec.channels, json);
  Count("statedBitrate", codec.averageBitrate, json);
  json->Member("protected", codec.isProtected);
  Text("scheme", codec.scheme, json);
}

void WriteEdit(const EditInfo& edit, JsonWriter* json) {
  Real("seconds", edit.seconds, json);
  json->Name("from");
  edit.from ? json->Real(*edit.from) : json->Null();
  if (edit.rate != 1) Real("rate", edit.rate, json);
}

void WriteSamples(const MovieTrack& track, JsonWriter* json) {
  json->Member("samples", track.samples);
  if (!track.wholeTrack) json->Member("moreSamples", true);
  Count("syncSamples", track.syncSamples, json);
  json->Member("bytes", track.bytes);
  Real("sampleSeconds", track.sampleSeconds, json);
  if (track.sampleSeconds > 0) {
    Real("bitrate", static_cast<double>(track.bytes) * 8 / track.sampleSeconds, json);
  }
  if (track.rateDenominator == 0) return;
  json->Name("frameRate");
  json->BeginObject();
  json->Member("numerator", track.rateNumerator);
  json->Member("denominator", track.rateDenominator);
  json->Member("constant", track.constantRate);
  json->EndObject();
}

void WriteTrack(const MovieTrack& track, JsonWriter* json) {
  json->Member("id", track.id);
  Text("handler", track.handler, json);
  Text("name", track.name, json);
  Text("language", track.language, json);
  json->Member("enabled", track.enabled);
  json->Member("timescale", track.timescale);
  if (track.seconds) Real("seconds", *track.seconds, json);
  if (track.width > 0 || track.height > 0) {
    Real("width", track.width, json);
    Real("height", track.height, json);
    json->Name("rotation");
    track.rotation ? json->Signed(*track.rotation) : json->Null();
  }
  Objects("descriptions", track.codecs, json,
          [&](const CodecInfo& codec) { WriteCodec(codec, json); });
  Objects("edits", track.edits, json, [&](const EditInfo& edit) { WriteEdit(edit, json); });
  WriteSamples(track, json);
}

void WriteMetadata(const MovieInfo& info, JsonWriter* json) {
  Objects("metadata", info.tags, json, [&](const TagInfo& tag) {
    json->Member("type", tag.type);
    Text("name", tag.name, json);
    json->Member("value", tag.value);
  });
  Objects("chapters", info.chapters, json, [&](const ChapterInfo& chapter) {
    Real("seconds", chapter.seconds, json);
    json->Member("title", chapter.title);
  });
  if (info.coverSize == 0) return;
  json->Name("cover");
  json->BeginObject();
  Text("type", info.coverType, json);
  json->Member("size", info.coverSize);
  json->EndObject();
}

}  // namespace

std::string MovieInfoJson(const MovieInfo& info, bool indented) {
  std::string text;
  JsonWriter json(&text, indented ? JsonWriter::Form::kIndented : JsonWriter::Form::kLine);
  json.BeginObject();
  json.Member("size", info.fileSize);
  json.Member("verdict", info.verdict);
  Text("reason", info.reason, &json);
  Texts("schemes", info.schemes, &json);
  Text("brand", info.brand, &json);
  Texts("compatibleBrands", info.compatibleBrands, &json);
  json.Member("hasMovie", info.hasMovie);
  if (info.created != "unset") Text("created", info.created, &json);
  if (info.seconds) Real("seconds", *info.seconds, &json);
  Count("fragments", info.fragments, &json);
  Objects("tracks", info.tracks, &json, [&](const MovieTrack& track) { WriteTrack(track, &json); });
  WriteMetadata(info, &json);
  Texts("problems", info.problems, &json);
  json.EndObject();
  return text;
}

}  // namespace mp4
