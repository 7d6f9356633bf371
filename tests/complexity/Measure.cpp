#include "tests/complexity/Measure.h"

void MeasuredOperation(const std::function<void()>* work) { (*work)(); }
