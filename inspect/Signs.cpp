#include "inspect/Signs.h"

#include <algorithm>

#include "io/FourCC.h"
#include "iso/EncryptionGroups.h"
#include "iso/UserType.h"

namespace mp4 {

namespace {

/// SampleAuxiliaryInformationSizesBox "saiz" (ISO/IEC 14496-12, 8.7.8) that names a scheme. One
/// that names nothing may be about anything.
bool IsOfScheme(FieldView saiz) {
  const VersionAndFlags head = ReadVersionAndFlags(&saiz);
  if ((head.flags & 1) == 0) return false;
  switch (saiz.Type()) {
    case FourCC("cenc"):
    case FourCC("cens"):
    case FourCC("cbc1"):
    case FourCC("cbcs"):
    case FourCC("sve1"):
    case FourCC("piff"):
      return true;
    default:
      return false;
  }
}

}  // namespace

bool Signs::IsKind(BoxId box, Kind* kind) {
  BoxTree& tree = findings_->Tree();
  switch (tree.At(box).type) {
    case FourCC("senc"):
      *kind = Kind::kSamples;
      return true;
    case FourCC("uuid"):
      *kind = Kind::kSamples;
      return KindOfUserType(&tree, box) == UserTypeKind::kSampleEncryption;
    case FourCC("sgpd"):
      *kind = Kind::kGroups;
      return ReadGroupingType(tree.Payload(box, 0, 8)) == FourCC("seig");
    case FourCC("sbgp"):
    case FourCC("csgp"):
      *kind = Kind::kGroupMap;
      return ReadGroupingType(tree.Payload(box, 0, 8)) == FourCC("seig");
    case FourCC("saiz"):
      *kind = Kind::kAuxiliary;
      return IsOfScheme(tree.Payload(box, 0, 8));
    default:
      return false;
  }
}

bool Signs::Collect(BoxId box, std::uint32_t track) {
  Kind kind{};
  if (!IsKind(box, &kind)) return false;
  if (kind == Kind::kGroups) describedTracks_.insert(track);
  if (kind != Kind::kGroups || TurnsOnEncryption(box)) Keep(kind, box, track);
  return true;
}

/// Whether a group is encrypted, or may be because the description cannot be read.
bool Signs::TurnsOnEncryption(BoxId sgpd) {
  std::vector<EncryptionGroup> groups;
  if (!ReadEncryptionGroups(findings_->Tree().Payload(sgpd), &groups)) return true;
  return std::any_of(groups.begin(), groups.end(),
                     [](const EncryptionGroup& group) { return group.isProtected; });
}

void Signs::Keep(Kind kind, BoxId box, std::uint32_t track) {
  const std::uint64_t key = std::uint64_t{track} << 8 | static_cast<std::uint8_t>(kind);
  if (seen_.insert(key).second) signs_.push_back({kind, box, track});
}

const char* Signs::TextOf(Kind kind) {
  switch (kind) {
    case Kind::kSamples:
      return "Sample encryption information.";
    case Kind::kGroups:
    case Kind::kGroupMap:
      return "A group of samples with encryption parameters of its own.";
    case Kind::kAuxiliary:
      return "Auxiliary information of an encryption scheme.";
    case Kind::kSystem:
      break;
  }
  return "A protection system for the media of this fragment.";
}

void Signs::ResolveOne(const Sign& sign, const MovieFacts& movie) {
  Subject subject;
  if (sign.track != 0) subject.track = sign.track;
  if (sign.kind == Kind::kGroupMap && describedTracks_.count(sign.track) != 0) return;
  if (!movie.seen) {
    const bool hint = sign.kind == Kind::kGroupMap || sign.kind == Kind::kAuxiliary;
    if (!hint) findings_->Protect(sign.box, subject, TextOf(sign.kind));
    return;
  }
  const auto facts = movie.tracks.find(sign.track);
  if (facts != movie.tracks.end() && facts->second.isProtected) {
    findings_->Support(sign.box, subject, TextOf(sign.kind));
  } else if (sign.kind != Kind::kSystem) {
    findings_->Doubt(sign.box, "boxes of encrypted samples, yet no sample entry of track " +
                                   std::to_string(sign.track) + " is protected");
  }
}

void Signs::Resolve(const MovieFacts& movie) {
  for (const Sign& sign : signs_) ResolveOne(sign, movie);
}

}  // namespace mp4
