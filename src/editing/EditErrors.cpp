#include "editing/EditErrors.h"

#include <velmora/ModelEdit.h>

namespace velmora {

namespace editing {

void raiseNotUnderstood(const std::string& detail) {
    throw Error(100, kEditSource, "The edit is not understood").setDetail(detail);
}

void raiseNotApplicable(const std::string& detail) {
    throw Error(100, kEditSource, "The edit does not apply to the model").setDetail(detail);
}

}  // namespace editing

namespace {

std::string joined(const std::vector<std::string>& reasons) {
    std::string out;
    for (const std::string& reason : reasons)
        out += (out.empty() ? "" : "; ") + reason;
    return out;
}

}  // namespace

EditRefused::EditRefused(std::vector<std::string> reasons, std::string note, std::string whenForced)
    : Error(100, editing::kEditSource, "The edit was refused"),
      reasons_(std::move(reasons)),
      note_(std::move(note)),
      whenForced_(std::move(whenForced)) {
    setDetail("refused: " + joined(reasons_) + (note_.empty() ? "" : "; " + note_));
}

}  // namespace velmora
