#include <velmora/BGLCommandList.h>
#include <velmora/ConditionList.h>
#include <velmora/MDLObject.h>

#include "support/ErrorMatchers.h"
#include "support/ModelBytes.h"
#include "support/StreamAssembler.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>

using namespace velmora;
using testbytes::hex;
using testbytes::section;

namespace {

using bgltest::command;

inline std::shared_ptr<BGLCommandList> listOf(
    std::initializer_list<std::shared_ptr<BGLCommand>> commands) {
    auto list = std::make_shared<BGLCommandList>();
    for (const auto& c : commands)
        list->Add(c);
    return list;
}

// "IFIN1>4 BGL_CALL_32>5 BGL_END": names and the destination of each jump parameter; with
// `full`, every parameter text and the parent too.
inline std::string shape(const BGLCommandList& list, bool full = false) {
    std::string out;
    for (const auto& c : list) {
        const BGLCommandDictEntry row = BGLOpcodeDictionary::row(c->opcode())
                                            ? *BGLOpcodeDictionary::row(c->opcode())
                                            : BGLCommandDictEntry{};
        out += (out.empty() ? "" : " ") + row.name;
        for (int i = 0; i < row.numParam; ++i) {
            const auto slot = static_cast<int16_t>(i);
            if (full) out += "|" + c->param(slot);
            if (row.isJump[static_cast<std::size_t>(i)])
                out += ">" + std::to_string(c->jumpDest(slot));
        }
        if (full) out += "^" + std::to_string(c->parent());
    }
    return out;
}

// The parameter texts of command `position`, "a|b|c".
inline std::string paramsOf(const BGLCommandList& list, int32_t position) {
    const auto c = list.Item(position);
    std::string out;
    for (int i = 0; i < BGLOpcodeDictionary::row(c->opcode())->numParam; ++i)
        out += (i ? "|" : "") + c->param(static_cast<int16_t>(i));
    return out;
}

// A model of a header and a box and the given sections, holding copies of the commands.
inline std::shared_ptr<MDLObject> modelWith(const BGLCommandList& commands,
                                            const std::string& moreSections = "") {
    using namespace testbytes;
    auto model = std::make_shared<MDLObject>();
    model->readMDLBytes(riff(section("MDLH", std::string(36, '\1')) +
                             section("BBOX", std::string(24, '\0')) + moreSections));
    for (const auto& c : commands)
        model->BGLCommandList()->Add(std::make_shared<BGLCommand>(*c));
    return model;
}

template <class Edit>
int errorOf(Edit&& edit) {
    try {
        edit();
    } catch (const Error& e) {
        return e.number();
    }
    return 0;
}

std::shared_ptr<Condition> condition(CondType type, const std::string& var = "", int16_t min = 0,
                                     int16_t max = 0) {
    auto c = std::make_shared<Condition>();
    c->cType(type);
    c->var(var);
    c->min(min);
    c->max(max);
    return c;
}
const auto a = [] { return condition(Between, "141", 1, 5); };
const auto b = [] { return condition(Between, "142", -5, 7); };
const auto c = [] { return condition(Between, "143", 0, 9); };

// Writes conditions in front of a fresh guarded call G (to 3), followed by N and the body.
std::shared_ptr<BGLCommandList> written(eMultiCondition combination,
                                        std::vector<std::shared_ptr<Condition>> conditions) {
    auto list = listOf({command(BGL_CALL_32, {"0"}, 3), command(BGL_END), command(BGL_RETURN)});
    auto cList = list->getConditions(-1);
    for (auto& item : conditions)
        cList->Add(item);
    cList->multiCondition(combination);
    list->addCondition(cList);
    return list;
}

std::string conditionsText(const ConditionList& list) {
    std::string out;
    for (const auto& item : list)
        out += item->getTypeString() + "(" + item->var() + "," + std::to_string(item->min()) + "," +
               std::to_string(item->max()) + ") ";
    return out + std::to_string(list.commandStart()) + ".." + std::to_string(list.commandEnd()) +
           " m" + std::to_string(list.multiCondition());
}

const auto setMaterial = [](int texture) {
    return command(SET_MATERIAL, {"0", std::to_string(texture)});
};
const auto other = [] { return command(SETWRD, {"1", "2"}); };
std::shared_ptr<BGLCommand> dayTest(int start, int end, int32_t jump = 0) {
    return command(IFIN1, {"", "906", std::to_string(start), std::to_string(end)}, jump);
}

// Summer 60 to 150 (texture 5), autumn 151 to 300 (6), winter 301 to 59 (7).
seasonalTextures threeSeasons() {
    seasonalTextures s;
    s.Material = {5, 6, 7, 8, 9};
    s.dayStart = {60, 151, 301, 0, 0};
    s.dayEnd = {150, 300, 59, 0, 0};
    s.active = {true, true, true, false, false};
    return s;
}

// Textures 5, 6 and 7 (0-based) are the summer, autumn and winter of group 3, out of nine; the
// file keeps neither the group nor the season, so a host sets them after every load.
std::shared_ptr<MDLObject> seasonalModel(const BGLCommandList& commands) {
    auto model = modelWith(commands);
    const textureVariant variants[] = {summer, autumn, winter};
    for (int i = 0; i < 9; ++i)
        model->TextureList()->Add();
    for (int i = 0; i < 3; ++i) {
        model->TextureList()->Item(6 + i)->parent(3);
        model->TextureList()->Item(6 + i)->textureVariant(variants[i]);
    }
    return model;
}

std::string seasonsText(const seasonalTextures& s) {
    std::string out;
    for (std::size_t i = 0; i < 5; ++i)
        out += (i ? " " : "") +
               (s.active[i] ? std::to_string(s.dayStart[i]) + "-" + std::to_string(s.dayEnd[i])
                            : std::string("off"));
    return out;
}

const auto light = [] { return command(BGL_LIGHT, std::vector<std::string>(11, "0")); };
const auto baseOverride = [] { return command(VAR_BASE_OVERRIDE, {"0"}); };
std::shared_ptr<BGLCommand> maskTest(int variable, int32_t jump = 0) {
    return command(IFMSK, {"", std::to_string(variable), "1"}, jump);
}

// A list header of one triangle from `base` on, or a triangle of the list.
const auto header = [](int base) {
    return command(DRAW_TRI_LIST_BEGIN, {std::to_string(base), "3", "1"});
};
std::shared_ptr<BGLCommand> triangle(int a, int b, int c) {
    return command(DRAW_TRI_LIST_ITEM, {std::to_string(a), std::to_string(b), std::to_string(c)});
}

// Vertices 1 to 4: the origin, (10,0,0) at tx 0.5, the origin again, (10,0,0) at (3,4).
// Textures 1 to 4: group 1 at position 1 (size 0) with position 2 (size 50); group 3 at
// position 3 (size 100); position 4 in group 0.
std::string sizesAfter(std::initializer_list<std::shared_ptr<BGLCommand>> commands) {
    auto model = modelWith(*listOf(commands));
    const float corners[4][3] = {{0, 0, 0}, {10, 0.5f, 0}, {0, 0, 0}, {10, 3, 4}};  // x, tx, ty
    const int16_t parents[4] = {1, 1, 3, 0};
    const float sizes[4] = {0, 50, 100, 7};
    for (int i = 0; i < 4; ++i) {
        auto v = model->VertexList()->Add();
        v->x(corners[i][0]);
        v->tx(corners[i][1]);
        v->ty(corners[i][2]);
        model->TextureList()->Add()->parent(parents[i]);
        model->TextureList()->Item(i + 1)->size(sizes[i]);
    }
    const int error = errorOf([&] { model->updateTextureSize(); });
    std::ostringstream out;
    for (const auto& t : *model->TextureList())
        out << t->size() << " ";
    return out.str() + "error " + std::to_string(error);
}

}  // namespace

TEST(Conditions, TheFourCombinationsComeOutCommandForCommandAndReadBack) {
    struct Case {
        eMultiCondition combination;
        std::vector<std::shared_ptr<Condition>> conditions;
        const char* shape;
        const char* readBack;
    };
    // clang-format off
    const Case cases[] = {
        // mAND: the tests in list order, each failing to N.
        {mAND, {a(), b()}, "IFIN1>4 IFIN1>4 BGL_CALL_32>5 BGL_END BGL_RETURN",
         "Between(141,1,5) Between(142,-5,7) 1..3 m0"},
        // mOR: last condition first, a jump to G behind each test, the opening jump leaves.
        {mOR, {a(), b()}, "IFIN1>3 BGL_JUMP_32>6 IFIN1>5 BGL_JUMP_32>6 BGL_JUMP_32>7 BGL_CALL_32>8 BGL_END BGL_RETURN",
         "Between(142,-5,7) Between(141,1,5) 1..6 m1"},
        {mNOT, {a(), b()}, "IFIN1>3 BGL_JUMP_32>6 IFIN1>5 BGL_JUMP_32>6 BGL_CALL_32>7 BGL_END BGL_RETURN",
         "Between(142,-5,7) Between(141,1,5) 1..5 m2"},
        {mNOR, {a(), b()}, "IFIN1>4 IFIN1>4 BGL_JUMP_32>5 BGL_CALL_32>6 BGL_END BGL_RETURN",
         "Between(142,-5,7) Between(141,1,5) 1..4 m3"},
        // A third condition keeps the shapes.
        {mOR, {a(), b(), c()}, "IFIN1>3 BGL_JUMP_32>8 IFIN1>5 BGL_JUMP_32>8 IFIN1>7 BGL_JUMP_32>8 BGL_JUMP_32>9 BGL_CALL_32>10 BGL_END BGL_RETURN",
         "Between(143,0,9) Between(142,-5,7) Between(141,1,5) 1..8 m1"},
        {mNOR, {a(), b(), c()}, "IFIN1>5 IFIN1>5 IFIN1>5 BGL_JUMP_32>6 BGL_CALL_32>7 BGL_END BGL_RETURN",
         "Between(143,0,9) Between(142,-5,7) Between(141,1,5) 1..5 m3"},
        // Under mOR a mask goes in front of G and the list reads back as mAND.
        {mOR, {a(), condition(mask, "300", 3)}, "IFIN1>3 BGL_JUMP_32>5 BGL_JUMP_32>6 IFMSK>6 BGL_CALL_32>7 BGL_END BGL_RETURN",
         "Between(141,1,5) Mask(300,3,0) 1..5 m0"},
        // A rotation alone inserts nothing, not even the opening jump; it rewrites the call.
        {mOR, {condition(RotWind)}, "SPRITE_VICALL>3 BGL_END BGL_RETURN", "Rotate with wind(,0,0) 1..1 m0"},
        {mAND, {condition(RotUser), a()}, "IFIN1>3 SPRITE_VICALL>4 BGL_END BGL_RETURN",
         "Between(141,1,5) Rotate to user(,0,0) 1..2 m0"},
    };
    // clang-format on
    for (const Case& k : cases) {
        SCOPED_TRACE(k.shape);
        auto list = written(k.combination, k.conditions);
        EXPECT_EQ(shape(*list), k.shape);
        EXPECT_EQ(conditionsText(*list->getConditions(-1)), k.readBack);
    }
    EXPECT_EQ(paramsOf(*written(mOR, {a(), b()}), 2), "") << "jumps have an empty parameter 0";
    EXPECT_EQ(paramsOf(*written(mAND, {condition(RotWind)}), 1), "0|0|0|0|0|0|0|0|0|3188");
    EXPECT_EQ(paramsOf(*written(mAND, {condition(RotUser)}), 1), "0|0|0|0|0|0|1|0|0|0");
    EXPECT_EQ(written(mNOT, {a()})->getConditions(-1)->multiCondition(), mAND)
        << "one condition is never folded";
}

TEST(Conditions, WritingBackIsStableForAndAndTurnsTheTestsRoundOtherwise) {
    // A stretch with a stray command: it goes with the rest.
    auto list = listOf({command(IFIN1, {"0", "141", "1", "5"}, 5), command(SETWRD, {"1", "2"}),
                        command(IFMSK, {"0", "200", "7"}, 5), command(BGL_CALL_32, {"0"}, 6),
                        command(BGL_END), command(BGL_RETURN)});
    list->addCondition(list->getConditions(-1));
    const std::string once = shape(*list, true);
    EXPECT_EQ(shape(*list), "IFIN1>4 IFMSK>4 BGL_CALL_32>5 BGL_END BGL_RETURN");
    list->addCondition(list->getConditions(-1));
    EXPECT_EQ(shape(*list, true), once);

    for (const eMultiCondition m : {mOR, mNOT, mNOR}) {
        auto turned = written(m, {a(), b(), c()});
        const std::string before = shape(*turned);
        EXPECT_EQ(turned->Item(1)->param(1), "143") << m;
        turned->addCondition(turned->getConditions(-1));
        EXPECT_EQ(shape(*turned), before) << m;
        EXPECT_EQ(turned->Item(1)->param(1), "141") << "the tests turn round under " << m;
    }

    // Clearing the conditions of a sprite call gives the plain call back, parameters kept.
    auto wind = written(mAND, {condition(RotWind)});
    auto clear = wind->getConditions(-1);
    clear->Remove(1);
    wind->addCondition(clear);
    EXPECT_EQ(shape(*wind), "BGL_CALL_32>3 BGL_END BGL_RETURN");
    EXPECT_EQ(wind->Item(1)->param(9), "3188");
}

TEST(Conditions, DocumentedFailures) {
    // No guarded call, or no command at all: the scan runs off the list. A range test and a
    // rotation under mNOT: the look-back reaches index 0. A range that is no number.
    const std::pair<std::shared_ptr<BGLCommandList>, int> scans[] = {
        {listOf({command(IFIN1, {"0", "1", "2", "3"}, 2), command(BGL_END)}), 9},
        {listOf({}), 9},
        {written(mNOT, {a(), condition(RotWind)}), 9},
        {listOf({command(IFIN1, {"0", "1", "x", "3"}), command(BGL_CALL_32)}), 13},
    };
    for (const auto& [list, number] : scans)
        EXPECT_TRUE(throwsPlatform([&] { list->getConditions(-1); }, number));
    EXPECT_TRUE(throwsPlatform([] { condition(static_cast<CondType>(4))->getTypeString(); }, 9));
    auto list = written(mAND, {});
    EXPECT_TRUE(throwsPlatform([&] { list->addCondition(list->getConditions(0)); }, 9));
}

// How the seasons are sorted into a run, and how the jumps follow, is compared with the single
// steps on random seasons and lists in OnePassEdits below; here one run written and read back.
TEST(SeasonalTextures, TheRunOfThreeSeasonsAtTenComesOutCommandForCommand) {
    // Jumps onto, into and behind the old run at 10 and 11, then N at 12.
    const auto runAtTen = [] {
        return listOf({other(), command(BGL_CALL_32, {}, 10),
                       command(IFIN1, {"", "5", "0", "0"}, 11), command(BGL_JUMP_32, {}, 12),
                       other(), other(), other(), other(), other(), dayTest(1, 100, 12),
                       setMaterial(5), other(), command(BGL_JUMP_32, {}, 14), command(BGL_END)});
    };
    auto list = runAtTen();
    list->addSeasonalTextures(threeSeasons());
    EXPECT_EQ(shape(*list),
              "SETWRD BGL_CALL_32>10 IFIN1>10 BGL_JUMP_32>10 SETWRD SETWRD SETWRD SETWRD SETWRD "
              "IFIN1>13 SET_MATERIAL BGL_JUMP_32>17 IFIN1>16 SET_MATERIAL BGL_JUMP_32>17 "
              "SET_MATERIAL SETWRD BGL_JUMP_32>19 BGL_END");

    // Read back; the old run had only summer dated, so it alone counted.
    EXPECT_EQ(seasonsText(seasonalModel(*runAtTen())->readSeasonalDates(3)),
              "1-100 off off off off");
    auto model = seasonalModel(*list);
    EXPECT_EQ(seasonsText(model->readSeasonalDates(3)), "60-150 151-300 301-59 off off");
    EXPECT_EQ(seasonsText(model->readSeasonalDates(4)), "off off off off off");

    // The new run holds Material(0), so it is found again as a whole and written the same.
    const std::string once = shape(*list, true);
    list->addSeasonalTextures(threeSeasons());
    EXPECT_EQ(shape(*list, true), once);
}

TEST(SeasonalTextures, ReadingDatesAndTheDocumentedFailures) {
    // One dated variant, one without: the other gets the rest of the year, 366 to 0 here.
    auto model = seasonalModel(
        *listOf({other(), dayTest(1, 365), setMaterial(6), setMaterial(5), setMaterial(-1)}));
    EXPECT_EQ(seasonsText(model->readSeasonalDates(3)), "366-0 1-365 off off off");
    model = seasonalModel(*listOf({other(), setMaterial(5)}));
    EXPECT_EQ(seasonsText(model->readSeasonalDates(3)), "off off off off off");

    // A run at the head or at the end fails before it changes; a texture group naming no
    // entry fails too.
    for (auto list :
         {listOf({setMaterial(5), other()}), listOf({other(), dayTest(1, 2, 3), setMaterial(5)})}) {
        const std::string before = shape(*list, true);
        EXPECT_TRUE(throwsPlatform([&] { list->addSeasonalTextures(threeSeasons()); }, 9));
        EXPECT_EQ(shape(*list, true), before);
    }
    EXPECT_TRUE(
        throwsPlatform([] { seasonalModel(*listOf({setMaterial(5)}))->readSeasonalDates(3); }, 9));
    EXPECT_TRUE(throwsPlatform(
        [] {
            seasonalModel(*listOf({other(), setMaterial(9)}))->readSeasonalDates(3);
        },
        9));
    EXPECT_TRUE(throwsPlatform([] { MDLObject().readSeasonalDates(3); }, 91));
}

TEST(KillShadow, TwelveBytesOnLoadedAndUnloadedModels) {
    const std::string killShadow = "42 47 4C 20 00 00 00 00 BD 00 22 00";
    auto model = modelWith(BGLCommandList(), section("SHAD", "real shadow"));
    model->updateSectionSize();
    const int32_t riffWithout = model->getRIFFSectionSize(0) - (11 + 8);
    model->addKillShadow();
    model->addKillShadow();
    EXPECT_EQ(hex(model->getRIFFSectionData(5)), killShadow);
    EXPECT_EQ(model->getRIFFSectionSize(0), riffWithout + 12 + 8);

    model->removeKillShadow();
    EXPECT_EQ(model->getRIFFSectionSize(0), riffWithout);
    TempDir dir;
    model->saveMDL(dir.file("plain.mdl"));
    EXPECT_EQ(readFile(dir.file("plain.mdl")).find("SHAD"), std::string::npos);

    // A model never loaded gets the section and no error; the sizes wait for a save.
    MDLObject unloaded;
    unloaded.addKillShadow();
    EXPECT_EQ(hex(unloaded.getRIFFSectionData(5)), killShadow);
    EXPECT_TRUE(throwsPlatform([&] { unloaded.updateSectionSize(); }, 91));
}

// Which tests and overrides in front of a light go, and how the jumps follow, is compared with
// the single steps in OnePassEdits below; here the rule itself and what else the edit keeps.
TEST(FixLights, MaskTestsUpTo200GoTheDictionaryEmptiesAndKeysStay) {
    auto model = modelWith(*listOf({command(SETWRD, {"1", "2"}), baseOverride(), maskTest(200),
                                    light(), maskTest(201), light()}),
                           section("DICT", "dict"));
    model->BGLCommandList()->Add(command(SETWRD, {"3", "4"}), "Tail", 1);
    model->fixLights();
    EXPECT_EQ(shape(*model->BGLCommandList()), "SETWRD SETWRD BGL_LIGHT IFMSK>0 BGL_LIGHT");
    EXPECT_EQ(model->getRIFFSectionSize(3), 0);
    EXPECT_EQ(model->BGLCommandList()->Item("tail"), model->BGLCommandList()->Item(1));
    EXPECT_TRUE(throwsPlatform([&] { model->BGLCommandList()->Add(nullptr, "TAIL"); }, 457));
    EXPECT_TRUE(throwsPlatform([] { MDLObject().fixLights(); }, 91));
}

TEST(TextureSize, GroupsTakeTheLargestRatioOfTheirEdges) {
    const std::pair<std::string, const char*> cases[] = {
        // Ratio 10 / 0.5 = 20 sets both entries of group 1; group 3 keeps its 100.
        {sizesAfter(
             {setMaterial(1), header(0), triangle(0, 1, 2), setMaterial(-1), triangle(0, 3, 2)}),
         "20 20 100 7 error 0"},
        // tx 3 and ty 4: a texture length of 5, ratio 2. The base vertex counts.
        {sizesAfter({setMaterial(0), header(2), triangle(0, 1, 0)}), "2 2 100 7 error 0"},
        // Equal texture coordinates: no division, nothing changes.
        {sizesAfter({setMaterial(0), triangle(0, 2, 0)}), "0 50 100 7 error 0"},
        // A texture number outside the list; a group that names no entry (also before any
        // SET_MATERIAL); a corner without a vertex, after the first edge raised the group.
        {sizesAfter({setMaterial(4)}), "0 50 100 7 error 9"},
        {sizesAfter({setMaterial(3), triangle(0, 1, 2)}), "0 50 100 7 error 9"},
        {sizesAfter({triangle(0, 1, 2)}), "0 50 100 7 error 9"},
        {sizesAfter({setMaterial(0), triangle(0, 1, 9)}), "20 20 100 7 error 9"},
        {sizesAfter({setMaterial(0), header(40000), triangle(0, 1, 2)}), "0 50 100 7 error 6"},
    };
    for (const auto& [sizes, expected] : cases)
        EXPECT_EQ(sizes, expected);
    EXPECT_TRUE(throwsPlatform([] { MDLObject().updateTextureSize(); }, 91));
}

// The bulk edits written the plain way, one insertion or removal at a time, each followed by
// its repair of the jumps. The library's one-pass versions must leave exactly the same list.
namespace reference {

inline bool inSeasonalRun(const BGLCommand& c) {
    return (c.opcode() == IFIN1 && c.param(1) == "906") || c.opcode() == SET_MATERIAL ||
           c.opcode() == BGL_JUMP_32;
}

inline int32_t seasonalBlock(const BGLCommandList& list, int16_t texture, bool backwards,
                             int32_t startAt) {
    for (int32_t i = startAt; i <= list.Count(); ++i) {
        const auto c = list.Item(i);
        if (c->opcode() != SET_MATERIAL || c->param(1) != std::to_string(texture)) continue;
        const int32_t step = backwards ? -1 : 1;
        while (inSeasonalRun(*list.Item(i + step)))
            i += step;
        return i;
    }
    return -1;
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
        for (std::size_t v = 0; v < 5; ++v) {
            if (s.active[v]) order.push_back(static_cast<int>(v));
            if (s.dayEnd[v] < s.dayStart[v]) wrap = static_cast<int>(v);
        }
        const auto material = [&s](int season) {
            return command(SET_MATERIAL, {"0", std::to_string(s.Material[std::size_t(season)])});
        };
        if (order.size() == 1) {
            insertAt(material(0), P);
            added = 1;
        } else {
            if (wrap != -1) {
                insertAt(material(wrap), P);
                ++added;
            }
            for (const int season : order) {
                if (season == wrap) continue;
                const auto v = static_cast<std::size_t>(season);
                auto jump = command(BGL_JUMP_32, {});
                insertAt(jump, P);
                jump->jumpDest(0, P + added + 1);
                insertAt(material(season), P);
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
