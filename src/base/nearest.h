// The known name that a mistyped one most likely means.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace photrak {

/// Letters to insert, delete, replace or swap with their neighbor to get from one word to the
/// other, counted twice; wrong case throughout counts one in all.
std::size_t TypingDistance(std::string_view typed, std::string_view name);

/// Takes known names one by one and keeps the nearest; of equally near ones the first.
class NearestName {
  public:
    explicit NearestName(std::string_view typed);
    void Offer(std::string_view name);
    /// Empty if no name is near enough to be meant: about a third of the letters may differ.
    const std::string& Found() const { return found_; }

  private:
    std::string typed_, found_;
    std::size_t least_;
};

/// "; did you mean 'NAME'?", nothing for an empty name.
std::string DidYouMean(std::string_view name);

/// The same over a range, with what gives the name of an element.
template <class Range, class NameOf>
std::string NearestOf(std::string_view typed, const Range& range, const NameOf& nameOf) {
    NearestName nearest(typed);
    for (const auto& element : range) nearest.Offer(nameOf(element));
    return nearest.Found();
}

}  // namespace photrak
