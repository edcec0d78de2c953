#include <velmora/DrawListSink.h>
#include <velmora/MDLObject.h>

#include "foundation/Errors.h"
#include "walk/DrawListAdapter.h"
#include "walk/Walks.h"

namespace velmora {

namespace {

// The display list of a walk: its name goes to `drawListId`, then the walk's geometry as the
// operations of the list. The model must be loaded before a name is taken.
void recordList(const MDLObject& model, DrawListSink& sink, int16_t& drawListId,
                const Scenario* scenario) {
    required(model.BGLCommandList());
    required(model.MaterialList());
    required(model.TextureList());
    required(model.VertexList());
    walk::DrawListAdapter adapter(sink);
    drawListId = adapter.beginList();
    walk::walkModel(model, adapter, scenario);
    adapter.endList();
}

}  // namespace

void MDLObject::glGenerateDrawList(DrawListSink& sink) {
    recordList(*this, sink, drawListId_, nullptr);
}

void MDLObject::glGenerateDrawList(DrawListSink& sink, const Scenario& scenario) {
    recordList(*this, sink, drawListId_, &scenario);
}

}  // namespace velmora
