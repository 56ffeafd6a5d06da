// What a step costs is counted from the records that it does not share with the one before.
#include "workbench/history.h"

#include "kernel/parameters.h"

namespace photrak {
namespace {

constexpr std::size_t mostBytes = std::size_t{64} << 20;

std::size_t BytesOf(const BlockState& block) {
    std::size_t bytes = sizeof(BlockState) + sizeof(Component) +
                        (block.inputs.size() + block.outputs.size()) * sizeof(PortState);
    constexpr std::size_t perParameter = 512;  // record, name, texts and limits
    for (const Parameter& parameter : Items(block.settings->parameters)) {
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
    constexpr std::size_t perLink = 16, perNode = 160;
    std::size_t bytes = (state.blocks.size() + state.nodes.size()) * perLink;
    std::size_t other = 0;
    for (const auto& block : state.blocks) {
        while (other < former.blocks.size() && former.blocks[other]->id != block->id) ++other;
        const bool shared = other < former.blocks.size() && former.blocks[other] == block;
        if (!shared) bytes += BytesOf(*block);
        if (other == former.blocks.size()) other = 0;
    }
    const std::size_t changed = state.nodes.size() > former.nodes.size()
                                    ? state.nodes.size() - former.nodes.size()
                                    : std::size_t{4};
    return bytes + changed * perNode;
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
