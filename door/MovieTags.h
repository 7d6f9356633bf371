#pragma once

#include "door/MovieInfo.h"
#include "iso/BoxTree.h"
#include "samples/Movie.h"

namespace mp4 {

/// The metadata of a movie box: items of "ilst", texts of QuickTime's user data, cover and Nero's
/// chapters. May throw bad_alloc.
void TakeTags(BoxTree* tree, BoxId moov, MovieInfo* info);

/// Chapters of a text track that another refers to as "chap", unless there are some. May throw
/// bad_alloc.
void TakeChapterTrack(BoxTree* tree, BoxId moov, ByteSource* source, Movie* movie, MovieInfo* info);

}  // namespace mp4
