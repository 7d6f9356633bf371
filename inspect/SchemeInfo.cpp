#include "inspect/SchemeInfo.h"

#include "inspect/Words.h"
#include "io/FourCC.h"
#include "iso/SchemeType.h"
#include "iso/TrackEncryption.h"
#include "iso/TypeText.h"
#include "iso/UserType.h"

namespace mp4 {

namespace {

void ReadScheme(BoxTree* tree, BoxId schm, ReportScheme* scheme) {
  SchemeType type;
  if (!scheme->type.empty() || !ReadSchemeType(tree->Payload(schm), &type)) return;
  scheme->type = TypeText(type.type);
  scheme->version = type.version;
  scheme->uri = type.uri;
}

/// Whether the box is a track encryption box in one of its forms, read into `encryption`.
bool ReadEncryption(BoxTree* tree, BoxId box, TrackEncryption* encryption) {
  if (tree->At(box).type == FourCC("tenc"))
    return ReadTrackEncryption(tree->Payload(box), encryption);
  return KindOfUserType(tree, box) == UserTypeKind::kTrackEncryption &&
         ReadPiffTrackEncryption(tree->Payload(box), encryption);
}

void ReadParameters(BoxTree* tree, BoxId schi, ReportScheme* scheme) {
  for (BoxId box = tree->FirstChild(schi); box != kNoBox; box = tree->Next(box)) {
    TrackEncryption encryption;
    if (scheme->defaultKeyId.has_value() || !ReadEncryption(tree, box, &encryption)) continue;
    scheme->defaultProtected = encryption.isProtected;
    scheme->defaultKeyId = encryption.keyId;
    scheme->ivSize = encryption.ivSize;
    scheme->cryptBlocks = encryption.cryptBlocks;
    scheme->skipBlocks = encryption.skipBlocks;
    scheme->constantIv = encryption.constantIv;
  }
}

void SupportByParameters(Findings* findings, BoxId schi, const ReportScheme& scheme,
                         const Subject& subject) {
  BoxTree& tree = findings->Tree();
  for (BoxId box = tree.FirstChild(schi); box != kNoBox; box = tree.Next(box)) {
    const bool encryption = tree.At(box).type == FourCC("tenc") ||
                            KindOfUserType(&tree, box) == UserTypeKind::kTrackEncryption;
    if (!encryption) continue;
    if (!scheme.defaultKeyId.has_value()) {
      findings->Support(box, subject, "Its track encryption box cannot be read.");
    } else {
      findings->Support(box, subject,
                        std::string("Samples are ") +
                            (scheme.defaultProtected.value_or(true) ? "encrypted" : "clear") +
                            " by default, with key id " + IdText(*scheme.defaultKeyId) + ".");
    }
    return;
  }
}

}  // namespace

ReportScheme ReadSchemeInfo(BoxTree* tree, BoxId sinf) {
  ReportScheme scheme;
  for (BoxId box = tree->FirstChild(sinf); box != kNoBox; box = tree->Next(box)) {
    switch (tree->At(box).type) {
      case FourCC("frma"): {
        FieldView fields = tree->Payload(box, 0, 4);
        const std::uint32_t format = fields.Type();
        if (fields.Ok() && scheme.originalFormat.empty()) scheme.originalFormat = TypeText(format);
        break;
      }
      case FourCC("schm"):
        ReadScheme(tree, box, &scheme);
        break;
      case FourCC("schi"):
        ReadParameters(tree, box, &scheme);
        break;
      default:
        break;
    }
  }
  return scheme;
}

void ReportSchemeInfo(Findings* findings, BoxId sinf, const ReportScheme& scheme, Subject subject) {
  BoxTree& tree = findings->Tree();
  subject.scheme = scheme.type;
  const BoxId schm = tree.Child(sinf, FourCC("schm"));
  if (scheme.type.empty()) {
    findings->Protect(sinf, subject, "A protection scheme information box that names no scheme.");
  } else {
    findings->Protect(schm, subject, "The protection scheme is \"" + scheme.type + "\".");
  }
  const BoxId schi = tree.Child(sinf, FourCC("schi"));
  if (schi != kNoBox) SupportByParameters(findings, schi, scheme, subject);
}

}  // namespace mp4
