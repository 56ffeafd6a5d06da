#include "platform/temporary_name.h"

#include <array>
#include <charconv>
#include <functional>
#include <system_error>
#include <unistd.h>

namespace photrak {
namespace {

/// Tells machines apart that share a folder: a process of another one cannot be looked up.
const std::string& HostMark() {
    static const std::string mark = [] {
        std::array<char, 256> name{};
        ::gethostname(name.data(), name.size() - 1);
        std::string text("-");
        text += std::to_string(std::hash<std::string_view>{}(name.data()) % 1'000'000);
        return text;
    }();
    return mark;
}

}  // namespace

std::string TemporaryStem() {
    std::string stem(temporaryStart);
    return stem.append(std::to_string(::getpid())).append(HostMark());
}

int OwnerOfTemporary(std::string_view name) {
    if (!name.starts_with(temporaryStart) || !name.ends_with(temporaryEnd)) return 0;
    const char* digits = name.data() + temporaryStart.size();
    int owner = 0;
    const auto [end, error] = std::from_chars(digits, name.data() + name.size(), owner);
    const std::string_view rest(end, static_cast<std::size_t>(name.data() + name.size() - end));
    return error == std::errc() && rest.starts_with(HostMark()) && owner > 0 ? owner : 0;
}

}  // namespace photrak
