#pragma once

#include <velmora/BGLCommandList.h>
#include <velmora/MDLObject.h>

#include <string>
#include <vector>

// The bulk edits written the plain way, one insertion or removal at a time, each followed by
// its repair of the jumps. The library's one-pass versions must leave exactly the same list.
namespace reference {

using namespace velmora;

inline bool inSeasonalRun(const BGLCommand& c) {
    return (c.opcode() == IFIN1 && c.param(1) == "906") || c.opcode() == SET_MATERIAL ||
           c.opcode() == BGL_JUMP_32;
}

inline int32_t seasonalBlock(const BGLCommandList& list, int16_t texture, bool backwards,
                             int32_t startAt) {
    int32_t result = -1;
    for (int32_t i = startAt; i <= list.Count(); ++i) {
        const auto c = list.Item(i);
        if (c->opcode() == SET_MATERIAL && c->param(1) == std::to_string(texture)) {
            result = i;
            break;
        }
    }
    if (result == -1) return result;
    const int32_t step = backwards ? -1 : 1;
    while (inSeasonalRun(*list.Item(result + step)))
        result += step;
    return result;
}

inline std::shared_ptr<BGLCommand> made(BGLOpcode opcode, std::vector<std::string> params) {
    auto c = std::make_shared<BGLCommand>();
    c->opcode(opcode);
    for (std::size_t i = 0; i < params.size(); ++i)
        c->param(static_cast<int16_t>(i), params[i]);
    return c;
}

inline void addSeasonalTextures(BGLCommandList& list, const seasonalTextures& s) {
    const auto insertAt = [&list](std::shared_ptr<BGLCommand> c, int32_t at) {
        list.Add(c, "", at);
        list.updateJumpDest(static_cast<int16_t>(at + 1));
    };
    int32_t P = seasonalBlock(list, s.Material[0], true, 1);
    int32_t Q = seasonalBlock(list, s.Material[0], false, 1);
    while (P != -1) {
        for (int32_t k = Q; k >= P; --k) {
            list.Remove(k);
            list.updateJumpDest(static_cast<int16_t>(k + 1), true);
        }
        int32_t added = 0;
        std::vector<int> order;
        int wrap = -1;
        for (int i = 0; i < 5; ++i) {
            if (s.active[static_cast<std::size_t>(i)]) order.push_back(i);
            if (s.dayEnd[static_cast<std::size_t>(i)] < s.dayStart[static_cast<std::size_t>(i)])
                wrap = i;
        }
        if (order.size() == 1) {
            insertAt(made(SET_MATERIAL, {"0", std::to_string(s.Material[0])}), P);
            added = 1;
        } else {
            if (wrap != -1) {
                insertAt(made(SET_MATERIAL,
                              {"0", std::to_string(s.Material[static_cast<std::size_t>(wrap)])}),
                         P);
                ++added;
            }
            for (const int season : order) {
                if (season == wrap) continue;
                const auto v = static_cast<std::size_t>(season);
                auto jump = made(BGL_JUMP_32, {});
                insertAt(jump, P);
                jump->jumpDest(0, P + added + 1);
                insertAt(made(SET_MATERIAL, {"0", std::to_string(s.Material[v])}), P);
                auto test = made(
                    IFIN1, {"", "906", std::to_string(s.dayStart[v]), std::to_string(s.dayEnd[v])});
                test->jumpDest(0, P + 2);
                insertAt(test, P);
                added += 3;
            }
        }
        const int32_t next = P + added;
        P = seasonalBlock(list, s.Material[0], true, next);
        Q = seasonalBlock(list, s.Material[0], false, next);
    }
}

inline void fixLights(MDLObject& model) {
    model.cleanDICT();
    BGLCommandList& list = *model.BGLCommandList();
    for (int32_t i = 1; i <= list.Count(); ++i) {
        if (list.Item(i)->opcode() != BGL_LIGHT) continue;
        int32_t reached = i;
        for (;;) {
            const auto before = list.Item(reached - 1);
            if (before->opcode() != VAR_BASE_OVERRIDE && before->opcode() != IFMSK) break;
            if (before->opcode() == IFMSK && std::stod(before->param(1)) > 200) {
                --reached;
                continue;
            }
            list.Remove(reached - 1);
            list.updateJumpDest(static_cast<int16_t>(reached), true);
            --reached;
            --i;
        }
    }
}

}  // namespace reference
