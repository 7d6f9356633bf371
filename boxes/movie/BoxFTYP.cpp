#include "boxes/movie/BoxFTYP.h"

#include "boxes/base/Mp4Context.h"
#include "io/BulkRead.h"
#include "io/WrapMath.h"

namespace {

/// Major brand and minor version.
constexpr long long kFixedBytes = 8;
constexpr long long kBrandBytes = 4;

/// Reads compatible brands, at least one, until one decides the mode or `size` is reached. Returns
/// the bytes of the box consumed so far, which a last brand that is cut short may take past `size`.
long long ReadCompatibleBrands(mmStreamReader* reader, long long size, Mp4Context* context) {
  long long consumed = kFixedBytes;
  long long held = mp4::Remaining(reader);
  do {
    consumed += kBrandBytes;
    held -= kBrandBytes;
    if (context->SetCompatibleBrand(reader->GetLe32())) return consumed;
  } while (consumed < size && held > 0);
  if (consumed >= size) return consumed;
  // Brands behind the end of the source read as zero, which no brand is.
  const long long brandsLeft = (size - consumed - 1) / kBrandBytes + 1;
  const long long bytesLeft = mp4::WrapMul(brandsLeft, kBrandBytes);
  mp4::PassAsRead(reader, bytesLeft);
  return mp4::WrapAdd(consumed, bytesLeft);
}

}  // namespace

bool BoxFTYP::ReadData(mmStreamReader* reader, long long size, Mp4Context* context) {
  if (reader == nullptr || size < kFixedBytes + kBrandBytes || context == nullptr) return false;
  // A known major brand decides by itself. In ISO/IEC 14496-12 a reader may go by any compatible
  // brand that it knows.
  const bool known = context->SetMajorBrand(reader->GetLe32());
  context->SetMinorVersion(static_cast<int>(reader->GetBe32()));
  const long long consumed = known ? kFixedBytes : ReadCompatibleBrands(reader, size, context);
  reader->Skip(mp4::WrapSub(size, consumed));
  return true;
}
