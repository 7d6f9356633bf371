#include "door/LayoutJson.h"

#include "door/JsonWriter.h"
#include "inspect/BoxNames.h"
#include "iso/TypeText.h"
#include "samples/MediaLayout.h"
#include "samples/TrackTotals.h"

namespace mp4 {

namespace {

void WriteTrack(const TrackInfo& info, const TrackLayout& layout, JsonWriter* json) {
  json->BeginObject();
  json->Member("id", info.id);
  json->Member("handler", info.handler != 0 ? TypeText(info.handler) : std::string());
  const bool described = !info.descriptions.empty();
  json->Member("codec",
               described ? NameOfFormat(info.descriptions[0].Codec()) : std::string_view());
  json->Member("protected", info.IsProtected());
  json->Member("whole", layout.whole);
  json->Name("extents");
  json->BeginArray();
  for (const MediaExtent& extent : layout.extents) {
    json->BeginArray();
    json->Unsigned(extent.offset);
    json->Unsigned(extent.end);
    json->Unsigned(extent.bytes);
    json->EndArray();
  }
  json->EndArray();
  json->Name("bytes");
  json->BeginArray();
  for (const std::uint64_t bytes : layout.bytes) json->Unsigned(bytes);
  json->EndArray();
  json->EndObject();
}

}  // namespace

std::string LayoutJson(ByteSource* source, std::size_t parts) {
  Movie movie(source);
  const MediaLayout layout = LayoutOf(&movie, parts, MostSamplesWalked(source->Size()));
  std::string text;
  JsonWriter json(&text);
  json.BeginObject();
  json.Member("size", source->Size());
  json.Name("seconds");
  json.Real(layout.seconds);
  json.Name("tracks");
  json.BeginArray();
  for (std::size_t i = 0; i < layout.tracks.size(); ++i) {
    WriteTrack(movie.Tracks()[i]->Info(), layout.tracks[i], &json);
  }
  json.EndArray();
  json.EndObject();
  return text;
}

}  // namespace mp4
