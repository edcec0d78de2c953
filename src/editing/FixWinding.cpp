#include <velmora/BGLCommandList.h>
#include <velmora/FrontFace.h>
#include <velmora/MDLObject.h>
#include <velmora/ModelEdit.h>

#include "editing/ModelEditing.h"
#include "foundation/Errors.h"

namespace velmora {

std::vector<int32_t> fixWinding(MDLObject& model) {
    if (!model.BGLCommandList() || !model.VertexList()) raisePlatformError(kObjectNotSet);
    const std::vector<int32_t> reversed = reversedTriangles(model);
    const auto& commands = model.BGLCommandList()->commands();
    for (const int32_t position : reversed) {
        BGLCommand& item = *commands.at0(static_cast<std::size_t>(position - 1));
        const std::string second = item.param(1);
        item.param(1, item.param(2));
        item.param(2, second);
    }
    return reversed;
}

namespace editing {

void editWinding(MDLObject& model, EditSteps& steps) {
    const std::size_t turned = fixWinding(model).size();
    EditStep step;
    step.readBack = [turned](const MDLObject& written) {
        const std::size_t left = reversedTriangles(written).size();
        if (left != 0) {
            raiseReadBack("the model written still holds " + std::to_string(left) +
                          " reversed triangles");
        }
        return std::vector<std::string>{"winding: " + std::to_string(turned) +
                                        " reversed triangles turned round"};
    };
    steps.steps.push_back(std::move(step));
}

}  // namespace editing

}  // namespace velmora
