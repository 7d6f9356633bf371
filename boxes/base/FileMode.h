#pragma once

/// What kind of file the brands say it is.
enum MP4_FILE_MODE : int {
  MP4_FILE_MODE_UNKNOWN = 0,
  MP4_FILE_MODE_MP4 = 1,
  MP4_FILE_MODE_MOV = 2,  ///< QuickTime, also a file without a file type box
  MP4_FILE_MODE_3GP = 3,
  MP4_FILE_MODE_PSP = 4,
  MP4_FILE_MODE_3G2 = 5,
};
