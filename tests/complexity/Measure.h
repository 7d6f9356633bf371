#pragma once

#include <functional>

/// Does the work under a name that its instructions are collected under. In a source of its own,
/// so that no compiler makes copies of it under other names.
extern "C" void MeasuredOperation(const std::function<void()>* work);
