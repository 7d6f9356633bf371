#include "demux/Mp4Demux.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "boxes/base/BoxReading.h"
#include "demux/MakeBlockBuffer.h"
#include "demux/Mp4FileMode.h"
#include "io/AttachedScan.h"
#include "io/BulkRead.h"
#include "io/Charge.h"
#include "io/FourCC.h"
#include "io/Limits.h"
#include "io/Mp4StreamReader.h"
#include "io/Prices.h"
#include "io/ScanControl.h"
#include "io/WithoutThrowing.h"

namespace {

constexpr int kBlockSizeWithoutContext = 0x200000;

/// First boxes that tell a QuickTime movie without a file type box.
bool StartsMovie(std::uint32_t type) {
  switch (type) {
    case mp4::FourCC("wide"):
    case mp4::FourCC("free"):
    case mp4::FourCC("skip"):
    case mp4::FourCC("mdat"):
    case mp4::FourCC("pnot"):
    case mp4::FourCC("moov"):
      return true;
    default:
      return false;
  }
}

}  // namespace

/// A top-level box header. For the 64-bit form the payload is deliberately 8 bytes too large and
/// the next position 8 bytes too far: hosts rely on the scan ending where it always did. In ISO/IEC
/// 14496-12 "largesize" counts the whole box, its header of 16 bytes included. Only the reader
/// itself, for media data, moves exactly to the end of the box.
struct Mp4Demux::TopBox {
  std::uint32_t type;
  bool large;
  long long size;
  long long payload;
};

Mp4Demux::~Mp4Demux() { Uninit(); }

void Mp4Demux::Uninit() {
  reader.reset();
  context.reset();
  fileTypeBox.reset();
  spareBox.reset();
  movieBox.reset();
  blockBuffer.reset();
  fragments.clear();
}

bool Mp4Demux::Init(const wchar_t* path) { return Open(path, Purpose::kDemux); }

bool Mp4Demux::InitForJudgement(const wchar_t* path) { return Open(path, Purpose::kJudge); }

bool Mp4Demux::Init(std::unique_ptr<mmStreamReader> source) {
  return Open(std::move(source), Purpose::kDemux);
}

bool Mp4Demux::InitForJudgement(std::unique_ptr<mmStreamReader> source) {
  return Open(std::move(source), Purpose::kJudge);
}

bool Mp4Demux::Open(const wchar_t* path, Purpose purpose) {
  Uninit();
  if (path == nullptr) return false;
  bool opened = false;
  mp4::WithoutThrowing([&] {
    auto file = std::make_unique<Mp4StreamReader>();
    // A file that does not open has size 0 and fails like a short one.
    file->SetFilePath(path);
    opened = Open(std::move(file), purpose);
  });
  return opened;
}

bool Mp4Demux::Open(std::unique_ptr<mmStreamReader> from, Purpose purpose) {
  Uninit();
  if (from == nullptr) return false;
  bool opened = false;
  mp4::WithoutThrowing([&] {
    mmStreamReader* source = from.get();
    reader = std::move(from);
    const long long fileSize = source->GetSize();
    context = std::make_unique<Mp4Context>();
    if (fileSize < mp4::limits::kSmallestFile) return;

    mp4::ScanControl scan(fileSize);
    scan.tablesUnread = purpose == Purpose::kJudge;
    const mp4::AttachedScan toReader(source, &scan);
    const mp4::AttachedScan toContext(context.get(), &scan);
    opened = Scan(fileSize);
  });
  return opened;
}

bool Mp4Demux::Scan(long long fileSize) {
  long long pos = 0;
  return ReadFirstBox(fileSize, &pos) && ScanTopLevel(fileSize, pos) && movieBox != nullptr;
}

bool Mp4Demux::ReadFirstBox(long long fileSize, long long* scanFrom) {
  // A size of 1 stands for itself here. In ISO/IEC 14496-12 it announces a "largesize".
  const std::uint32_t stored = reader->GetBe32();
  const long long size = stored != 0 ? stored : fileSize;
  const std::uint32_t type = reader->GetLe32();
  if (type == mp4::FourCC("ftyp")) {
    fileTypeBox = std::make_unique<BoxFTYP>();
    *scanFrom = size;
    return fileTypeBox->ReadData(reader.get(), size - 8, context.get());
  }
  if (!StartsMovie(type)) return false;
  context->SetMovMode();
  reader->SetPos(0);
  *scanFrom = 0;
  return true;
}

bool Mp4Demux::ScanTopLevel(long long fileSize, long long pos) {
  mp4::ScanControl* const scan = reader->Scan();
  while (pos < fileSize) {
    if (!mp4::ChargeStep(scan)) return false;
    unsigned char bytes[8] = {};
    reader->GetData(bytes, sizeof bytes);
    const std::uint32_t stored = mp4::LoadBe32(bytes);
    TopBox box{};
    box.size = stored != 0 ? stored : fileSize - pos;
    box.type = mp4::LoadLe32(bytes + 4);
    box.large = box.size == 1;
    if (box.large) box.size = static_cast<long long>(reader->GetBe64());
    if (__builtin_sub_overflow(box.size, 8, &box.payload)) return false;
    const long long header = box.large ? 16 : 8;
    long long step = 0;
    long long next = 0;
    const bool tooFar = __builtin_add_overflow(header, box.payload, &step);
    if (!tooFar && step <= 0) return false;
    const bool past = tooFar || __builtin_add_overflow(pos, step, &next);
    if (!Dispatch(box)) return false;
    if (past) return true;
    // The reader is not moved there: each box has left it at its own end.
    pos = next;
  }
  return true;
}

bool Mp4Demux::Dispatch(const TopBox& box) {
  switch (box.type) {
    case mp4::FourCC("moov"):
      return ReadMovie(box.payload);
    case mp4::FourCC("moof"):
      return ReadFragment(box.payload);
    case mp4::FourCC("mdat"):
      reader->Skip(box.large ? mp4::WrapSub(box.size, 16) : box.payload);
      return true;
    default:
      reader->Skip(box.payload);
      return true;
  }
}

/// A second movie box replaces the first; its result and content win. ISO/IEC 14496-12 has exactly
/// one.
bool Mp4Demux::ReadMovie(long long payload) {
  movieBox = std::make_unique<BoxMOOV>();
  return movieBox->ReadData(reader.get(), payload, context.get());
}

bool Mp4Demux::ReadFragment(long long payload) {
  if (!mp4::Charge(reader.get(), 0, mp4::prices::kCollectedBox)) return false;
  auto fragment = std::make_unique<BoxMOOF>();
  if (!fragment->ReadData(reader.get(), payload, nullptr)) return false;
  if (mp4::OnlyJudges(reader.get())) return true;
  fragment->MergeFragment(context.get(), movieBox.get());
  fragments.push_back(std::move(fragment));
  return true;
}

const MP4_FILE_MODE Mp4Demux::m_arSupportedMode[12] = {
    MP4_FILE_MODE_MP4,     MP4_FILE_MODE_3GP,     MP4_FILE_MODE_3G2,     MP4_FILE_MODE_PSP,
    MP4_FILE_MODE_MOV,     MP4_FILE_MODE_UNKNOWN, MP4_FILE_MODE_UNKNOWN, MP4_FILE_MODE_UNKNOWN,
    MP4_FILE_MODE_UNKNOWN, MP4_FILE_MODE_UNKNOWN, MP4_FILE_MODE_UNKNOWN, MP4_FILE_MODE_UNKNOWN};

int Mp4Demux::GetMaxBlockSize() {
  if (context == nullptr) return kBlockSizeWithoutContext;
  int largest = 0;
  for (const auto& track : context->tracks) {
    if (track != nullptr) largest = std::max(largest, static_cast<int>(track->maxSampleSize));
  }
  return largest;
}

bool Mp4Demux::ReadyToDemux() {
  if (movieBox == nullptr || context == nullptr) return false;
  const int largest = GetMaxBlockSize();
  if (blockBuffer == nullptr || blockBuffer->capacity < largest) {
    blockBuffer.reset();
    blockBuffer = mp4::MakeBlockBuffer(largest);
  }
  // Unready tracks show when samples are asked for, not here: hosts open silent movies too.
  movieBox->ReadyToDemux();
  return true;
}

bool Mp4Demux::IsSupportedFormat(unsigned int tag) {
  if (tag == 0) return false;
  return std::any_of(std::begin(m_arSupportedMode), std::end(m_arSupportedMode), [tag](auto mode) {
    const Mp4FileModeInfo* row = GetFileModeInfo(mode);
    unsigned char bytes[4];
    std::memcpy(bytes, row->tag, sizeof bytes);
    return mp4::LoadLe32(bytes) == tag;
  });
}
