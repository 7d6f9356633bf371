#include "demux/Mp4FileMode.h"

#include <array>
#include <cstring>
#include <cwchar>

namespace {

using Table = std::array<Mp4FileModeInfo, kFileModeRows>;

void SetRow(Mp4FileModeInfo* row, const char* tag, const wchar_t* name, const wchar_t* description,
            const wchar_t* extensions) {
  std::memset(row, 0, sizeof *row);
  std::memcpy(row->tag, tag, sizeof row->tag);
  std::wcsncpy(row->name, name, std::size(row->name) - 1);
  std::wcsncpy(row->description, description, std::size(row->description) - 1);
  std::wcsncpy(row->extensions, extensions, std::size(row->extensions) - 1);
}

Table FilledTable() {
  Table table{};
  InitFileModeInfoArray(table.data());
  return table;
}

}  // namespace

void InitFileModeInfoArray(Mp4FileModeInfo* rows) {
  if (rows == nullptr) return;
  std::memset(rows, 0, sizeof *rows);
  SetRow(rows + MP4_FILE_MODE_MP4, "mp41", L"QuickTime mp4 format", L"QuickTime/MPEG4/iPod",
         L".mp4;.m4a;.m4v");
  SetRow(rows + MP4_FILE_MODE_MOV, "mov ", L"QuickTime mov format", L"QuickTime mov", L".mov");
  SetRow(rows + MP4_FILE_MODE_3GP, "3gp ", L"3gp format", L"3rd Generation Partnership Project",
         L".3gp");
  SetRow(rows + MP4_FILE_MODE_PSP, "psp ", L"psp mp4 format", L"PSP/MPEG4", L".mp4");
  SetRow(rows + MP4_FILE_MODE_3G2, "3gp2", L"3g2 format", L"3rd Generation Partnership Project 2",
         L".3g2");
}

const Mp4FileModeInfo* GetFileModeInfo(MP4_FILE_MODE mode) {
  // Filled as it is made, so that threads asking at once all see a whole table.
  static const Table s_arFileModeInfo = FilledTable();
  const int row = mode;
  return row >= 0 && row < kFileModeRows ? &s_arFileModeInfo[static_cast<std::size_t>(row)]
                                         : nullptr;
}
