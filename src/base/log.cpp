// log.txt is written line by line and never kept open.
#include "base/log.h"

#include "platform/file_system.h"

namespace photrak {

void LogText(std::string_view text) {
    [[maybe_unused]] const bool written = AppendToFile("log.txt", text);
}

std::string InterpretPercent(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        result.push_back(text[i]);
        if (text[i] == '%' && i + 1 < text.size() && text[i + 1] == '%') ++i;
    }
    return result;
}

}  // namespace photrak
