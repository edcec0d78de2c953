#include <velmora/BGLCommandList.h>
#include <velmora/MDLObject.h>

#include "EditingHelpers.h"

#include <gtest/gtest.h>

#include <random>

using namespace velmora;
using namespace edittest;

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
            insertAt(command(SET_MATERIAL, {"0", std::to_string(s.Material[0])}), P);
            added = 1;
        } else {
            if (wrap != -1) {
                insertAt(command(SET_MATERIAL,
                                 {"0", std::to_string(s.Material[static_cast<std::size_t>(wrap)])}),
                         P);
                ++added;
            }
            for (const int season : order) {
                if (season == wrap) continue;
                const auto v = static_cast<std::size_t>(season);
                auto jump = command(BGL_JUMP_32, {});
                insertAt(jump, P);
                jump->jumpDest(0, P + added + 1);
                insertAt(command(SET_MATERIAL, {"0", std::to_string(s.Material[v])}), P);
                auto test = command(
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

TEST(OnePassEdits, MatchTheSingleStepsOnRandomLists) {
    int seasonalFailures = 0;
    int lightsRemoved = 0;
    for (unsigned seed = 1; seed <= 300; ++seed) {
        std::mt19937 random(seed);
        const auto below = [&](int n) {
            return std::uniform_int_distribution<int>(0, n - 1)(random);
        };
        const auto number = [&](int n) { return std::to_string(below(n)); };
        auto list = listOf({command(SETWRD, {"1", "2"})});
        for (int i = 0, length = 3 + below(40); i < length; ++i) {
            const int kind = below(11);
            list->Add(kind < 2    ? command(SET_MATERIAL, {"0", std::to_string(below(4) - 1)})
                      : kind == 2 ? command(IFIN1, {"", "906", number(366), number(366)})
                      : kind == 3 ? command(IFIN1, {"", "5", "1", "2"})
                      : kind == 4 ? command(BGL_JUMP_32)
                      : kind == 5 ? command(BGL_ANIMATE)
                      : kind == 6 ? command(BGL_LIGHT, std::vector<std::string>(11, "0"))
                      : kind == 7 ? command(VAR_BASE_OVERRIDE, {"0"})
                      : kind == 8 ? command(IFMSK, {"", below(2) ? "200" : "201", "1"})
                      : kind == 9 ? command(IFMSK, {"", number(400), "1"})
                                  : command(SETWRD, {"1", "2"}));
        }
        // Now and then a light or a run at the head, to see the failures match too.
        if (below(10) == 0) list->Item(1)->opcode(below(2) ? BGL_LIGHT : SET_MATERIAL);
        // Jumps lead anywhere from 0 to Count + 1: into, onto and behind the edited places.
        for (const auto& c : *list) {
            const BGLCommandDictEntry* row = BGLOpcodeDictionary::row(c->opcode());
            for (int16_t i = 0; i < row->numParam; ++i)
                if (row->isJump[static_cast<std::size_t>(i)])
                    c->jumpDest(i, below(list->Count() + 2));
        }
        seasonalTextures s;
        for (std::size_t v = 0; v < 5; ++v) {
            s.Material[v] = static_cast<int16_t>(below(4));
            s.dayStart[v] = static_cast<int16_t>(below(366));
            s.dayEnd[v] = static_cast<int16_t>(below(366));
            s.active[v] = below(2) == 1;
        }
        auto fast = modelWith(*list);
        auto plain = modelWith(*list);
        int error = errorOf([&] { fast->BGLCommandList()->addSeasonalTextures(s); });
        ASSERT_EQ(error,
                  errorOf([&] { reference::addSeasonalTextures(*plain->BGLCommandList(), s); }))
            << "seed " << seed;
        ASSERT_EQ(shape(*fast->BGLCommandList(), true), shape(*plain->BGLCommandList(), true))
            << seed;
        seasonalFailures += error != 0;
        const int32_t before = fast->BGLCommandList()->Count();
        error = errorOf([&] { fast->fixLights(); });
        ASSERT_EQ(error, errorOf([&] { reference::fixLights(*plain); })) << "seed " << seed;
        ASSERT_EQ(shape(*fast->BGLCommandList(), true), shape(*plain->BGLCommandList(), true))
            << seed;
        lightsRemoved += fast->BGLCommandList()->Count() < before;
    }
    EXPECT_GT(seasonalFailures, 10) << "runs at the ends are among the cases";
    EXPECT_GT(lightsRemoved, 50);
}
