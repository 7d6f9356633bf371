#pragma once

#include <cstdint>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

// What nearly every test makes of the language's templates, compiled once in CommonTemplates.cpp
// and not in each of the tests. In C++20 that does not go without saying even for strings.
extern template class std::basic_string<char>;
extern template class std::basic_string<wchar_t>;
extern template class std::unique_ptr<std::string>;
extern template class std::unique_ptr<std::stringstream>;
extern template class std::vector<std::string>;
extern template class std::vector<std::uint8_t>;
extern template class std::vector<std::uint32_t>;
