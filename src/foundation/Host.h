#pragma once

namespace velmora {

// Gives the host one turn through the hook of setYieldHook; does nothing without one.
void yieldToHost();

}  // namespace velmora
