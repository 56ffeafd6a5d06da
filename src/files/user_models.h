// User models: dynamic libraries named in user.lis, bound to model types.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "kernel/driver.h"

namespace photrak {

inline constexpr std::string_view noModelTestText = "No parameter test available for this model.";

struct UserModelEntry {
    std::string type, bitmap;
    std::string library;                // its path; empty: none is named, or not one to load
    std::string runSymbol, testSymbol;  // names of the entries; may be empty
    mutable void* loaded = nullptr;     // the library, once a model has wanted it
};

/// What a library is given when it is called.
struct LibraryPolicy {
    bool trustsAll = false;  // also files that belong to others or that others can write
    /// Seconds after which a call in a process of its own is ended; 0: calls are made in ours.
    double isolated = 0.0;
};

/// The user section of the model tables, consulted after the built-in names.
class UserModelTable : public UserModels {
  public:
    /// Reads user.lis a second time and looks at the headers of the libraries; no code of theirs is
    /// loaded before a model runs or is tested. What could not be loaded is reported in `messages`
    /// and keeps its place. Never a failure.
    void LoadUserModels(const Catalogue& catalogue, std::string& messages);
    bool Knows(std::string_view type) const override;
    Status Run(const ModelCall& call) const override;
    /// Whether a test entry is named for the type; the library may yet lack it.
    bool HasTest(std::string_view type) const;
    void SetPolicy(const LibraryPolicy& policy) { policy_ = policy; }
    /// Runs the parameter test; a model without one gives an error with noModelTestText.
    Status Test(std::string_view type, Parameter* parameters, std::string& message) const;
    const std::vector<UserModelEntry>& Entries() const { return entries_; }

  private:
    const UserModelEntry* Find(std::string_view type) const;

    std::vector<UserModelEntry> entries_;
    LibraryPolicy policy_;
};

}  // namespace photrak
