// The UTF-8 to UTF-32 conversion, and the path conversion, on any bytes.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "io/ConvertUTF.h"
#include "io/Utf8Path.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const auto flags = data[0] % 2 == 0 ? strictConversion : lenientConversion;
  const std::vector<unsigned char> source(data + 2, data + size);
  std::vector<unsigned int> target(data[1]);
  const ConversionResult result =
      ConvertUTF8toUTF32(source.data(), source.data() + source.size(), target.data(),
                         target.data() + target.size(), flags);
  if (result < conversionOK || result > sourceIllegal) std::abort();

  std::wstring path;
  for (std::size_t i = 0; i + 4 <= source.size(); i += 4) {
    path.push_back(static_cast<wchar_t>(source[i] | source[i + 1] << 8 | source[i + 2] << 16 |
                                        static_cast<unsigned>(source[i + 3]) << 24));
  }
  mp4::PathBuffer buffer;
  mp4::WidePathToUtf8(path.c_str(), &buffer);
  if (buffer[mp4::kPathLimit] != 0) std::abort();
  return 0;
}
