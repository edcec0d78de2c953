#include <velmora/MDLObject.h>

#include "foundation/Errors.h"
#include "foundation/Host.h"
#include "walk/Walks.h"

namespace velmora {

namespace walk {

void followInFileOrder(const BGLCommandList& commands, GeometryEmitter& emitter,
                       GeometrySink& sink) {
    int32_t position = 0;
    try {
        for (const auto& element : commands.commands()) {
            yieldToHost();
            ++position;
            sink.atCommand(position);
            emitter.emit(*element, position);
        }
    } catch (Error& error) {
        throw error.setCommand(position);
    }
}

void walkModel(const MDLObject& model, GeometrySink& sink, const Scenario* scenario) {
    const BGLCommandList& commands = required(model.BGLCommandList());
    GeometryEmitter emitter(required(model.MaterialList()), required(model.TextureList()),
                            required(model.VertexList()), sink);
    if (scenario) {
        followAsSimulated(commands, emitter, sink, *scenario);
    } else {
        followInFileOrder(commands, emitter, sink);
    }
}

}  // namespace walk

void MDLObject::walk(GeometrySink& sink, const std::optional<Scenario>& scenario) const {
    walk::walkModel(*this, sink, scenario ? &*scenario : nullptr);
}

}  // namespace velmora
