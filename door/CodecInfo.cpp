#include "door/CodecInfo.h"

#include <cstring>

#include "door/BoxView.h"
#include "inspect/BoxNames.h"
#include "io/FourCC.h"
#include "iso/TypeText.h"

namespace mp4 {

namespace {

std::uint64_t NumberOf(const FieldValue& value) {
  if (const auto* number = std::get_if<std::uint64_t>(&value)) return *number;
  return 0;
}

void TakeField(const BoxField& field, CodecInfo* info) {
  const auto is = [&](const char* name) { return std::strcmp(field.name, name) == 0; };
  if (is("profile")) info->profile = TextOfValue(field.value);
  if (is("level")) info->level = TextOfValue(field.value);
  if (is("tier")) info->tier = TextOfValue(field.value);
  if (is("chromaFormat")) info->chroma = TextOfValue(field.value);
  if (is("codecsParameter")) info->parameter = TextOfValue(field.value);
  if (is("bitDepth") || is("bitDepthLuma")) info->bitDepth = NumberOf(field.value);
  if (is("averageBitrate") && NumberOf(field.value) != 0) {
    info->averageBitrate = NumberOf(field.value);
  }
  if (is("channelCount")) info->channels = static_cast<std::uint32_t>(NumberOf(field.value));
  if (is("sampleRate") && NumberOf(field.value) != 0) {
    info->sampleRate = static_cast<double>(NumberOf(field.value));
  }
}

/// AMR has one channel, whatever its entry says (3GPP TS 26.244, 6.5).
bool IsMono(std::uint32_t codec) { return codec == FourCC("samr") || codec == FourCC("sawb"); }

bool IsConfiguration(std::uint32_t type) {
  switch (type) {
    case FourCC("avcC"):
    case FourCC("hvcC"):
    case FourCC("vvcC"):
    case FourCC("av1C"):
    case FourCC("vpcC"):
    case FourCC("esds"):
    case FourCC("dOps"):
    case FourCC("dfLa"):
    case FourCC("alac"):
    case FourCC("dac3"):
    case FourCC("dec3"):
    case FourCC("btrt"):
      return true;
    default:
      return false;
  }
}

/// The children of an entry; QuickTime has those of sound in a "wave".
void TakeConfigurations(BoxTree* tree, BoxId parent, bool inWave, CodecInfo* info) {
  std::size_t looked = 0;
  for (BoxId child = tree->FirstChild(parent); child != kNoBox && looked < 64;
       child = tree->Next(child), ++looked) {
    const std::uint32_t type = tree->At(child).type;
    if (type == FourCC("wave") && !inWave) TakeConfigurations(tree, child, true, info);
    if (!IsConfiguration(type)) continue;
    bool cut = false;
    for (const BoxField& field : FieldsOf(tree, child, &cut)) {
      TakeField(field, info);
      // The elementary stream tells what "mp4a" or "mp4v" is.
      if (std::strcmp(field.name, "objectType") == 0) info->codec = TextOfValue(field.value);
    }
  }
}

}  // namespace

CodecInfo CodecOf(BoxTree* tree, BoxId entry, const Description& description) {
  CodecInfo info;
  info.format = TypeText(description.format);
  if (description.original != 0) info.original = TypeText(description.original);
  info.codec = NameOfFormat(description.Codec());
  info.width = description.width;
  info.height = description.height;
  info.sampleRate = description.rate;
  info.channels = IsMono(description.Codec()) ? 1 : description.channels;
  info.isProtected = description.isProtected;
  if (description.scheme != 0) info.scheme = TypeText(description.scheme);
  TakeConfigurations(tree, entry, false, &info);
  if (!info.parameter.empty()) {
    info.parameter = TypeText(description.Codec()) + "." + info.parameter;
  }
  return info;
}

}  // namespace mp4
