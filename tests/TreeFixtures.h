#pragma once

#include <cstddef>
#include <string_view>
#include <utility>

#include "io/ByteOrder.h"
#include "io/CachedSource.h"
#include "io/MemorySource.h"
#include "iso/BoxTree.h"
#include "tests/Bytes.h"

namespace fixture {

/// The boxes of bytes that live as long as it.
class TreeOver {
 public:
  explicit TreeOver(Bytes file)
      : bytes_(std::move(file)),
        memory_(bytes_.data(), bytes_.size()),
        cache_(&memory_),
        tree(&cache_) {}

  /// The first box of each type on a path such as "moov/trak/mdia"; kNoBox when one is missing.
  mp4::BoxId At(std::string_view path) {
    mp4::BoxId id = mp4::kRootBox;
    for (std::size_t at = 0; at < path.size() && id != mp4::kNoBox; at += 5) {
      const auto* type = reinterpret_cast<const unsigned char*>(path.data() + at);
      id = tree.Child(id, mp4::LoadLe32(type));
    }
    return id;
  }

 private:
  Bytes bytes_;
  mp4::MemorySource memory_;
  mp4::CachedSource cache_;

 public:
  mp4::BoxTree tree;
};

}  // namespace fixture
