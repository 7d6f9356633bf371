#include <algorithm>
#include <cstring>

#include "inspect/FieldReader.h"
#include "inspect/FieldText.h"
#include "inspect/SystemNames.h"
#include "io/FourCC.h"
#include "iso/SchemeType.h"
#include "iso/TrackEncryption.h"
#include "iso/TypeText.h"
#include "iso/UserType.h"

namespace mp4 {

namespace {

void OriginalFormat(FieldReader* f) { f->Type("dataFormat"); }

void Scheme(FieldReader* f) {
  f->Full();
  f->Type("schemeType");
  // Marlin's short form has a version of 16 bits.
  if (f->View()->Left() == 2) {
    f->U16("schemeVersion");
    return;
  }
  f->U32("schemeVersion");
  if ((f->Flags() & 1) != 0) f->Text("schemeUri");
}

void ShowEncryption(FieldReader* f, const TrackEncryption& encryption) {
  f->Show("isProtected", encryption.isProtected);
  f->Show("perSampleIvSize", std::uint64_t{encryption.ivSize});
  if (encryption.cryptBlocks != 0 || encryption.skipBlocks != 0) {
    f->Show("cryptBlocks", std::uint64_t{encryption.cryptBlocks});
    f->Show("skipBlocks", std::uint64_t{encryption.skipBlocks});
  }
  f->Show("keyId", DashedId(encryption.keyId.data()));
  if (!encryption.constantIv.empty()) {
    f->Show("constantIv", HexText(encryption.constantIv.data(), encryption.constantIv.size()));
  }
}

void Encryption(FieldReader* f) {
  TrackEncryption encryption;
  const bool whole = ReadTrackEncryption(*f->View(), &encryption);
  f->Full();
  if (whole) {
    ShowEncryption(f, encryption);
  } else {
    f->Skip(f->View()->Left() + 1);
  }
}

void PiffEncryption(FieldReader* f) {
  TrackEncryption encryption;
  const bool whole = ReadPiffTrackEncryption(*f->View(), &encryption);
  f->Full();
  if (whole) ShowEncryption(f, encryption);
}

void System(FieldReader* f) {
  f->Full();
  FieldView ahead = *f->View();
  Id16 id{};
  const unsigned char* bytes = ahead.Bytes(id.size());
  if (bytes != nullptr) std::copy(bytes, bytes + id.size(), id.begin());
  f->Id("systemId");
  const std::string name = NameOfSystem(id);
  if (!name.empty()) f->Show("systemName", name);
  if (f->Version() >= 1) {
    const std::uint32_t count = f->U32("keyIdCount");
    const std::uint64_t there = std::min<std::uint64_t>(count, f->View()->Left() / 16);
    FieldView behind = *f->View();
    f->Rows("keyIds", there, [](FieldView* v) { return DashedId(v->Bytes(16)); });
    behind.Skip(std::size_t{16} * static_cast<std::size_t>(there));
    *f->View() = behind;
  }
  const std::uint32_t size = f->U32("dataSize");
  if (size > 0 && f->View()->Left() > 0)
    f->Hex("data", std::min<std::size_t>(size, f->View()->Left()));
}

void SampleEncryption(FieldReader* f) {
  f->Full();
  // PIFF's form may override what the track says.
  if (f->Tree()->At(f->Id()).type == FourCC("uuid") && (f->Flags() & 1) != 0) {
    f->U24("algorithm");
    f->U8("ivSize");
    f->Id("keyId");
  }
  f->U32("sampleCount");
  f->Show("hasSubsamples", (f->Flags() & 2) != 0);
  f->RestHex("samples");
}

void AuxiliaryKind(FieldReader* f) {
  f->Full();
  if ((f->Flags() & 1) == 0) return;
  f->Type("auxInfoType");
  f->U32("auxInfoTypeParameter");
}

void AuxiliarySizes(FieldReader* f) {
  AuxiliaryKind(f);
  const std::uint8_t all = f->U8("defaultSampleInfoSize");
  const std::uint32_t count = f->U32("sampleCount");
  if (all == 0) f->Rows("sizes", count, [](FieldView* v) { return std::to_string(v->U8()); });
}

void AuxiliaryOffsets(FieldReader* f) {
  AuxiliaryKind(f);
  const std::uint32_t count = f->U32("entryCount");
  const bool wide = f->Version() != 0;
  f->Rows("offsets", count,
          [wide](FieldView* v) { return std::to_string(wide ? v->U64() : v->U32()); });
}

void KeyManagement(FieldReader* f) {
  f->Full();
  if (f->Version() == 1) {
    f->Type("kmsId");
    f->U32("kmsVersion");
  }
  f->Text("kmsUri");
}

void SampleFormat(FieldReader* f) {
  f->Full();
  f->Show("selectiveEncryption", f->View()->U8() >> 7 != 0);
  f->U8("keyIndicatorLength");
  f->U8("ivLength");
}

void AccessUnitFormat(FieldReader* f) {
  f->Full();
  f->Show("selectiveEncryption", f->View()->U8() >> 7 != 0);
  f->U8("keyIndicatorLength");
  f->U8("ivLength");
}

void CommonHeaders(FieldReader* f) {
  f->Full();
  f->U8("encryptionMethod");
  f->U8("paddingScheme");
  f->U64("plaintextLength");
  const std::uint16_t contentId = f->View()->U16();
  const std::uint16_t issuer = f->View()->U16();
  f->Skip(2);
  const auto text = [f](const char* name, std::size_t n) {
    const unsigned char* bytes = f->View()->Bytes(n);
    if (bytes == nullptr || n == 0) return;
    f->Show(name, std::string(reinterpret_cast<const char*>(bytes), std::min(n, kShownText)));
  };
  text("contentId", contentId);
  text("rightsIssuerUrl", issuer);
}

void EncryptionInformation(FieldReader* f) {
  f->Full();
  f->Text("algorithm");
  f->U8("keyLength");
}

constexpr FieldParserRow kProtectionParsers[] = {
    {FourCC("frma"), OriginalFormat},
    {FourCC("schm"), Scheme},
    {FourCC("csch"), Scheme},
    {FourCC("tenc"), Encryption},
    {FourCC("pssh"), System},
    {FourCC("senc"), SampleEncryption},
    {FourCC("saiz"), AuxiliarySizes},
    {FourCC("saio"), AuxiliaryOffsets},
    {FourCC("iKMS"), KeyManagement},
    {FourCC("iSFM"), SampleFormat},
    {FourCC("odaf"), AccessUnitFormat},
    {FourCC("ohdr"), CommonHeaders},
    {FourCC("aeib"), EncryptionInformation},
    {FourCC("ipro"), FullHeaderOnly},
};

}  // namespace

FieldParser ProtectionFieldParser(std::uint32_t type) {
  return FindParser(kProtectionParsers, type);
}

void UserTypeFields(FieldReader* f) {
  const UserTypeKind kind = KindOfUserType(f->Tree(), f->Id());
  const unsigned char* type = f->Tree()->UserType(f->Id());
  if (type != nullptr) f->Show("userType", DashedId(type));
  // Asking for the type may have moved the bytes that were in hand.
  *f->View() = f->Tree()->Payload(f->Id());
  switch (kind) {
    case UserTypeKind::kSystem:
      return System(f);
    case UserTypeKind::kTrackEncryption:
      return PiffEncryption(f);
    case UserTypeKind::kSampleEncryption:
      return SampleEncryption(f);
    default:
      break;
  }
}

}  // namespace mp4
