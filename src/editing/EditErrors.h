#pragma once

#include <string>

// The failures of the edits people ask for: number 100, source "Velmora.ModelEdit", with a detail
// that says what is wrong in the words of the request.
namespace velmora::editing {

inline constexpr const char* kEditSource = "Velmora.ModelEdit";

// A request that doesn't say what it means: a condition, seasons or size text of another shape.
[[noreturn]] void raiseNotUnderstood(const std::string& detail);
// A request the model can't take, such as a texture it doesn't have.
[[noreturn]] void raiseNotApplicable(const std::string& detail);

}  // namespace velmora::editing
