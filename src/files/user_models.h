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
    PhotrakRunEntry run = nullptr;  // null: the library or the symbol was not found
    PhotrakTestEntry test = nullptr;
};

/// The user section of the model tables, consulted after the built-in names.
class UserModelTable : public UserModels {
  public:
    /// Reads user.lis a second time and binds the libraries. What does not load is reported in
    /// `messages` and keeps empty entries. Never a failure.
    void LoadUserModels(const Catalogue& catalogue, std::string& messages);
    bool Knows(std::string_view type) const override;
    Status Run(const ModelCall& call) const override;
    bool HasTest(std::string_view type) const;
    /// Runs the parameter test; a model without one gives an error with noModelTestText.
    Status Test(std::string_view type, Parameter* parameters, std::string& message) const;
    const std::vector<UserModelEntry>& Entries() const { return entries_; }

  private:
    const UserModelEntry* Find(std::string_view type) const;

    std::vector<UserModelEntry> entries_;
};

}  // namespace photrak
