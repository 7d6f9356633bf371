#include <algorithm>
#include <cerrno>
#include <new>

#include "door/LayoutJson.h"
#include "door/MovieInfo.h"
#include "door/Options.h"
#include "door/TreeHandle.h"
#include "door/TreeJson.h"
#include "io/CallbackSource.h"
#include "io/FileSource.h"
#include "io/MemorySource.h"

void mp4judge_tree::NoteTrouble(const mp4::ByteSource& read) {
  const mp4::SourceTrouble& trouble = read.Trouble();
  if (trouble.fault == mp4::SourceFault::kNone) return;
  const bool memory = trouble.fault == mp4::SourceFault::kNoMemory;
  error = memory ? MP4JUDGE_ERROR_MEMORY : MP4JUDGE_ERROR_READ;
  systemError = memory ? ENOMEM : trouble.error;
}

namespace {

mp4::ListingOptions ListingOf(const mp4judge_tree_options& options) {
  mp4::ListingOptions listing;
  listing.depth = std::max(options.depth, 0);
  if (options.path != nullptr) listing.path = options.path;
  listing.mostBoxes = options.most_boxes;
  return listing;
}

void SayUnopened(const mp4::OpenResult& opening, mp4judge_tree* tree) {
  const bool system = opening.fault == mp4::OpenFault::kSystem;
  tree->error = system ? MP4JUDGE_ERROR_OPEN : MP4JUDGE_ERROR_NOT_A_FILE;
  tree->systemError = opening.fault == mp4::OpenFault::kDirectory ? EISDIR : opening.error;
}

/// Lists the boxes and hands tree and listing to `use`.
template <class Use>
void List(mp4judge_tree* tree, const mp4judge_tree_options* given, Use&& use) {
  const mp4judge_tree_options whole = mp4::WholeTreeOptions(given);
  const mp4::ListingOptions options = ListingOf(whole);
  mp4::CachedSource cache(tree->source.get());
  mp4::BoxTree boxes(&cache, mp4::LimitsOf(options, cache.Size()));
  const mp4::BoxListing listing(&boxes, options);
  use(&boxes, listing, whole);
  tree->complete = listing.Complete();
  tree->NoteTrouble(cache);
}

/// A tree of what `open` makes, null without memory.
template <class Open>
mp4judge_tree* TreeOf(Open&& open) {
  try {
    auto tree = std::make_unique<mp4judge_tree>();
    open(tree.get());
    if (tree->source != nullptr) tree->NoteTrouble(*tree->source);
    return tree.release();
  } catch (...) {
    return nullptr;
  }
}

}  // namespace

mp4judge_tree* mp4judge_tree_open_path(const char* path) {
  return TreeOf([&](mp4judge_tree* tree) {
    mp4::OpenResult opening;
    tree->source = mp4::FileSource::Open(path, &opening);
    if (tree->source == nullptr) SayUnopened(opening, tree);
    if (path == nullptr) tree->error = MP4JUDGE_ERROR_ARGUMENT;
  });
}

mp4judge_tree* mp4judge_tree_open_memory(const void* bytes, size_t n) {
  return TreeOf(
      [&](mp4judge_tree* tree) { tree->source = std::make_unique<mp4::MemorySource>(bytes, n); });
}

mp4judge_tree* mp4judge_tree_open_callbacks(mp4judge_read_at read_at, mp4judge_size size,
                                            void* user) {
  return TreeOf([&](mp4judge_tree* tree) {
    if (read_at == nullptr || size == nullptr) {
      tree->error = MP4JUDGE_ERROR_ARGUMENT;
    } else {
      tree->source = std::make_unique<mp4::CallbackSource>(read_at, size, user);
    }
  });
}

void mp4judge_tree_free(mp4judge_tree* tree) { delete tree; }

mp4judge_error mp4judge_tree_error(const mp4judge_tree* tree) {
  return tree != nullptr ? tree->error : MP4JUDGE_ERROR_ARGUMENT;
}

int mp4judge_tree_errno(const mp4judge_tree* tree) {
  return tree != nullptr ? tree->systemError : 0;
}

uint64_t mp4judge_tree_file_size(const mp4judge_tree* tree) {
  return tree != nullptr && tree->source != nullptr ? tree->source->Size() : 0;
}

int mp4judge_tree_complete(const mp4judge_tree* tree) {
  return tree != nullptr && tree->complete ? 1 : 0;
}

mp4judge_error mp4judge_tree_walk(mp4judge_tree* tree, const mp4judge_tree_options* options,
                                  mp4judge_tree_visit visit, void* user) {
  if (tree == nullptr || visit == nullptr) return MP4JUDGE_ERROR_ARGUMENT;
  if (tree->source == nullptr) return tree->error;
  try {
    List(tree, options,
         [&](mp4::BoxTree* boxes, const mp4::BoxListing& listing, const mp4judge_tree_options&) {
           mp4::VisitListing(boxes, listing, [&](const mp4::ShownBox& shown) {
             const mp4::BoxView view(shown);
             return visit(user, view.Get()) == 0;
           });
         });
  } catch (...) {
    tree->error = MP4JUDGE_ERROR_MEMORY;
  }
  return tree->error;
}

const char* mp4judge_tree_json(mp4judge_tree* tree, const mp4judge_tree_options* options) {
  if (tree == nullptr) return nullptr;
  if (tree->source == nullptr) return "{\"size\":0,\"complete\":false,\"boxes\":[]}";
  try {
    List(tree, options,
         [&](mp4::BoxTree* boxes, const mp4::BoxListing& listing,
             const mp4judge_tree_options& whole) {
           const auto form = whole.indented != 0 ? mp4::JsonWriter::Form::kIndented
                                                 : mp4::JsonWriter::Form::kLine;
           tree->text = mp4::TreeJson(boxes, listing, form);
         });
    return tree->text.c_str();
  } catch (...) {
    tree->error = MP4JUDGE_ERROR_MEMORY;
    return nullptr;
  }
}

namespace {

/// The text that `make` answers for a tree that is open.
template <class Make>
const char* TextFrom(mp4judge_tree* tree, Make&& make) {
  if (tree == nullptr || tree->source == nullptr) return nullptr;
  try {
    tree->text = make(tree->source.get());
    tree->NoteTrouble(*tree->source);
    return tree->text.c_str();
  } catch (...) {
    tree->error = MP4JUDGE_ERROR_MEMORY;
    return nullptr;
  }
}

}  // namespace

const char* mp4judge_info_json(mp4judge_tree* tree, int indented) {
  return TextFrom(tree, [&](mp4::ByteSource* source) {
    return mp4::MovieInfoJson(mp4::InfoOf(source), indented != 0);
  });
}

const char* mp4judge_layout_json(mp4judge_tree* tree, unsigned parts) {
  return TextFrom(tree, [&](mp4::ByteSource* source) {
    return mp4::LayoutJson(source, std::clamp(parts, 1U, 4096U));
  });
}
