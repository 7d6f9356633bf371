#include "inspect/OmaContainer.h"

#include "io/FourCC.h"

namespace mp4 {

namespace {

std::string MethodText(std::uint8_t method) {
  switch (method) {
    case 1:
      return "AES with 128 bits, CBC";
    case 2:
      return "AES with 128 bits, CTR";
    case 3:
      return "AES with 128 bits, byte CTR";
    case 4:
      return "of MPEG-2 transport streams";
    default:
      return "number " + std::to_string(method);
  }
}

}  // namespace

void InspectOmaContainer(Findings* findings, BoxId odrm) {
  BoxTree& tree = findings->Tree();
  const BoxId headers = tree.Child(odrm, FourCC("odhe"));
  const BoxId common = headers != kNoBox ? tree.Child(headers, FourCC("ohdr")) : kNoBox;
  FieldView fields = common != kNoBox ? tree.Payload(common, 4, 1) : FieldView();
  const std::uint8_t method = fields.U8();
  if (!fields.Ok()) {
    findings->Doubt(odrm, "an OMA container without readable headers");
  } else if (method != 0) {
    Subject subject;
    subject.scheme = "odkm";
    findings->Protect(common, subject,
                      "An OMA container with encryption " + MethodText(method) + ".");
  } else {
    findings->Doubt(common, "an OMA container that is not encrypted holds media of any kind");
  }
}

}  // namespace mp4
