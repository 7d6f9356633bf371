#include "tests/CommonTemplates.h"

template class std::basic_string<char>;
template class std::basic_string<wchar_t>;
template class std::unique_ptr<std::string>;
template class std::unique_ptr<std::stringstream>;
template class std::vector<std::string>;
template class std::vector<std::uint8_t>;
template class std::vector<std::uint32_t>;
