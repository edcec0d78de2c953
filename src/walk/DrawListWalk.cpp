#include <velmora/DrawListSink.h>
#include <velmora/MDLObject.h>

#include "foundation/Errors.h"
#include "foundation/Host.h"
#include "foundation/NumberText.h"
#include "walk/DrawEmitter.h"

namespace velmora {

void MDLObject::glGenerateDrawList(DrawListSink& sink) {
    const velmora::BGLCommandList& commands = required(commandList_);
    walk::DrawEmitter emitter(required(materialList_), required(textureList_),
                              required(vertexList_), sink);

    drawListId_ = numbers::narrow16(static_cast<int64_t>(sink.glGenLists(1)));
    sink.glNewList(static_cast<uint32_t>(drawListId_), walk::kCompile);
    // A flat pass in file order: jumps are not followed and tests not evaluated, so every
    // triangle of the stream is drawn.
    int32_t position = 0;
    try {
        for (const auto& element : commands.commands()) {
            yieldToHost();
            ++position;
            sink.atCommand(position);
            emitter.emit(*element);
        }
    } catch (Error& error) {
        throw error.setCommand(position);
    }
    sink.glEndList();
}

}  // namespace velmora
