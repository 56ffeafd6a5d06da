// Topics of the help by model type, and the way into it.
#pragma once

#include <string_view>

#include "workbench/workbench.h"

namespace photrak {

/// Where a topic is told: a page below the folder of the help, without its ".md", and the heading
/// at which it begins; an empty heading is the top.
struct HelpPlace {
    std::string_view page, heading;
};
/// The place of a topic; the contents for 0 and for one that no page has.
HelpPlace HelpPlaceOf(std::int32_t topic);

/// Opens the help at a topic. With topic 0 (a user's model) it asks whether to open its contents.
void ShowHelp(Workbench& workbench, std::int32_t topic);

}  // namespace photrak
