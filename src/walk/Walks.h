#pragma once

#include <velmora/BGLCommandList.h>
#include <velmora/GeometrySink.h>
#include <velmora/MDLObject.h>
#include <velmora/Scenario.h>

#include "walk/GeometryEmitter.h"

// The two walks over a command stream behind MDLObject::walk. Each calls yieldToHost and tells
// the sink its position once per command it comes to, and marks an error with that position.
namespace velmora::walk {

// MDLObject::walk: under `scenario` as simulated, without one (nullptr) in file order.
void walkModel(const MDLObject& model, GeometrySink& sink, const Scenario* scenario);

// Every command in file order: jumps are not followed and tests not evaluated.
void followInFileOrder(const BGLCommandList& commands, GeometryEmitter& emitter,
                       GeometrySink& sink);
// The stream as the simulator follows it under `scenario`.
void followAsSimulated(const BGLCommandList& commands, GeometryEmitter& emitter, GeometrySink& sink,
                       const Scenario& scenario);

}  // namespace velmora::walk
