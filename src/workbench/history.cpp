// What a step costs is counted from the records that it does not share with the one before.
#include "workbench/history.h"

#include <algorithm>
#include <unordered_set>

#include "kernel/parameters.h"

namespace photrak {
namespace {

constexpr std::size_t mostBytes = std::size_t{64} << 20;

std::size_t BytesOf(const Component& settings) {
    std::size_t bytes = sizeof(Component);
    constexpr std::size_t perParameter = 512;  // record, name, texts and limits
    for (const Parameter& parameter : Items(settings.parameters)) {
        bytes += perParameter;
        if (!IsArrayType(parameter.type) || !parameter.valactual) continue;
        const auto& array = *static_cast<const ArrayRecord*>(parameter.valactual);
        bytes += static_cast<std::size_t>(array.rows) * static_cast<std::size_t>(array.cols) *
                 ElementBytes(parameter.type);
    }
    return bytes;
}

/// The lists themselves, and what they do not share.
std::size_t Cost(const DiagramState& state, const DiagramState& former) {
    constexpr std::size_t perLink = 16, perNode = 160, fewNodes = 4;
    std::size_t bytes = (state.blocks.size() + state.nodes.size()) * perLink;
    // Equal parts at both ends need no look.
    const auto [first, firstOld] = std::ranges::mismatch(state.blocks, former.blocks);
    const auto [last, lastOld] =
        std::mismatch(state.blocks.rbegin(), std::make_reverse_iterator(first),
                      former.blocks.rbegin(), std::make_reverse_iterator(firstOld));
    std::unordered_set<const Component*> known;
    std::for_each(firstOld, lastOld.base(),
                  [&](const auto& block) { known.insert(block->settings.get()); });
    std::for_each(first, last.base(), [&](const auto& block) {
        bytes += sizeof(BlockState) + block->ports->size() * sizeof(PortState);
        if (!known.contains(block->settings.get())) bytes += BytesOf(*block->settings);
    });
    const std::size_t more =
        state.nodes.size() > former.nodes.size() ? state.nodes.size() - former.nodes.size() : 0;
    return bytes + std::max(more, fewNodes) * perNode;
}

}  // namespace

void History::Start(DiagramState state) {
    states_.clear();
    states_.push_back({std::move(state), {}, 0});
    at_ = bytes_ = 0;
}

bool History::Commit(DiagramState state, std::string_view name) {
    if (states_.empty()) {
        Start(std::move(state));
        return false;
    }
    if (state == Present()) return false;
    while (states_.size() > at_ + 1) {
        bytes_ -= states_.back().bytes;
        states_.pop_back();
    }
    const std::size_t cost = Cost(state, Present());
    states_.push_back({std::move(state), std::string(name), cost});
    bytes_ += cost;
    ++at_;
    Bound();
    return true;
}

void History::Bound() {
    while (bytes_ > mostBytes && at_ > 1) {
        states_.pop_front();
        bytes_ -= states_.front().bytes;
        states_.front().bytes = 0;
        --at_;
    }
}

const DiagramState* History::Back() {
    if (states_.empty() || at_ == 0) return nullptr;
    return &states_[--at_].state;
}

const DiagramState* History::Forward() {
    if (at_ + 1 >= states_.size()) return nullptr;
    return &states_[++at_].state;
}

}  // namespace photrak
