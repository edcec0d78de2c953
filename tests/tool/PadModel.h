#pragma once

#include "support/ModelBytes.h"
#include "support/StreamAssembler.h"

#include <string>
#include <vector>

namespace tooltest {

using bgltest::jl;
using bgltest::jw;
using bgltest::Op;
using bgltest::StreamAssembler;
using bgltest::w;

// A square of two triangles on the ground behind `guard`, wound to face up or, `reversed`, down;
// its normals point up either way.
inline std::string padModel(const std::vector<Op>& guard, bool reversed = false) {
    StreamAssembler a;
    for (const Op& op : guard)
        a.add(op.opcode, op.fields);
    const int call = static_cast<int>(guard.size());
    a.add(velmora::BGL_CALL_32, {jl(call + 2)});
    a.add(velmora::BGL_END);
    a.add(velmora::SET_MATERIAL, {w(0), w(-1)});
    a.add(velmora::DRAW_TRI_LIST_BEGIN, {w(0), w(0), w(6)});
    a.add(velmora::DRAW_TRI_LIST_ITEM, {w(0), w(reversed ? 2 : 1), w(reversed ? 1 : 2)});
    a.add(velmora::DRAW_TRI_LIST_ITEM, {w(0), w(reversed ? 3 : 2), w(reversed ? 2 : 3)});
    a.add(velmora::BGL_RETURN);
    modelbytes::Model m;
    m.materials = {{}};
    m.vertices = {{-5, 0, -5, 0, 1, 0, 0, 0},
                  {5, 0, -5, 0, 1, 0, 1, 0},
                  {5, 0, 5, 0, 1, 0, 1, 1},
                  {-5, 0, 5, 0, 1, 0, 0, 1}};
    m.commands = a.bytes();
    return m.bytes();
}

}  // namespace tooltest
