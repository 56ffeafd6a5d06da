// The text shrinks from its front.
#include "numeric/number_file.h"

#include "base/text.h"

namespace photrak {

std::optional<double> NumberFile::NextDouble() {
    std::size_t used = 0;
    const double value = ReadDouble(text_, &used);
    if (used == 0) return std::nullopt;
    text_.remove_prefix(used);
    SkipToLineEnd();
    return value;
}

std::optional<std::int32_t> NumberFile::NextInt() {
    std::size_t used = 0;
    const std::int32_t value = ReadInt(text_, &used);
    if (used == 0) return std::nullopt;
    text_.remove_prefix(used);
    SkipToLineEnd();
    return value;
}

void NumberFile::SkipToLineEnd() {
    const auto end = text_.find_first_of("\n*");
    text_ = end == std::string_view::npos ? std::string_view() : text_.substr(end + 1);
}

bool NumberFile::AtEnd() const {
    return text_.find_first_not_of(" \t\n\v\f\r") == std::string_view::npos;
}

}  // namespace photrak
