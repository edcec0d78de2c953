#include <velmora/BGLCommandList.h>

#include "editing/ListRebuild.h"
#include "foundation/NumberText.h"

#include <exception>
#include <vector>

namespace velmora {

namespace {

constexpr int32_t kDayVariable = 906;

std::shared_ptr<BGLCommand> newSetMaterial(int16_t material) {
    auto command = std::make_shared<BGLCommand>();
    command->opcode(SET_MATERIAL);
    command->param(0, "0");
    command->param(1, numbers::formatInteger(material));
    return command;
}

// The run that replaces every block of seasonal commands, built by the single steps at a
// place 0: each command is inserted in front of the others and the destinations from 1 on are
// raised after each insertion. Its destinations count from the run's first command, and the
// run's size is the command behind it.
std::vector<std::shared_ptr<BGLCommand>> seasonalRun(const seasonalTextures& seasons) {
    std::vector<int> order;
    int wrapSeason = -1;
    for (int i = 0; i < 5; ++i) {
        const auto s = static_cast<std::size_t>(i);
        if (seasons.active[s]) order.push_back(i);
        if (seasons.dayEnd[s] < seasons.dayStart[s]) wrapSeason = i;
    }

    std::vector<std::shared_ptr<BGLCommand>> run;
    const auto insertInFront = [&run](std::shared_ptr<BGLCommand> command) {
        run.insert(run.begin(), std::move(command));
        for (const auto& c : run) {
            if (c->opcode() != SET_MATERIAL && c->jumpDest(0) >= 1) {
                c->jumpDest(0, c->jumpDest(0) + 1);
            }
        }
    };

    if (order.size() == 1) {
        // One season alone needs no test, and it shows the first season's texture.
        insertInFront(newSetMaterial(seasons.Material[0]));
        return run;
    }
    int32_t added = 0;
    if (wrapSeason != -1) {
        insertInFront(newSetMaterial(seasons.Material[static_cast<std::size_t>(wrapSeason)]));
        ++added;
    }
    for (const int season : order) {
        if (season == wrapSeason) continue;
        const auto s = static_cast<std::size_t>(season);
        auto closing = std::make_shared<BGLCommand>();
        closing->opcode(BGL_JUMP_32);
        insertInFront(closing);
        closing->jumpDest(0, added + 1);  // behind the run
        insertInFront(newSetMaterial(seasons.Material[s]));
        auto test = std::make_shared<BGLCommand>();
        test->opcode(IFIN1);
        test->param(1, numbers::formatInteger(kDayVariable));
        test->param(2, numbers::formatInteger(seasons.dayStart[s]));
        test->param(3, numbers::formatInteger(seasons.dayEnd[s]));
        test->jumpDest(0, 2);  // the next test, or the default
        insertInFront(test);
        added += 3;
    }
    return run;
}

}  // namespace

// Every run of seasonal commands around Material(0) is replaced, front to back, with the
// result of removing the run command by command and inserting the new one command by command,
// each step repairing the jumps. The runs are found first and the list is rebuilt in one pass.
void BGLCommandList::addSeasonalTextures(const seasonalTextures& sList) {
    const int16_t texture = sList.Material[0];
    const std::vector<std::shared_ptr<BGLCommand>> run = seasonalRun(sList);
    const auto runSize = static_cast<int64_t>(run.size());

    editing::ListEdit edit;
    std::exception_ptr failure;
    try {
        // After each replaced run the search goes on behind it; the commands there are the same
        // ones, so positions of the unchanged list serve, and only the count has moved on.
        int64_t countAsEdited = Count();
        int32_t startAt = 1;
        for (;;) {
            numbers::narrow16(countAsEdited);
            const int16_t first = findSeasonalBlock(texture, true, startAt);
            if (first == -1) break;
            const int16_t last = findSeasonalBlock(texture, false, startAt);
            if (edit.removal.empty()) edit.removal.assign(static_cast<std::size_t>(Count()), 0);
            for (int32_t k = first; k <= last; ++k) {
                edit.removal[static_cast<std::size_t>(k - 1)] = editing::ListEdit::Removed;
            }
            editing::ListEdit::Block block;
            block.before = first;
            block.commands.reserve(run.size());
            for (const auto& command : run) {
                block.commands.push_back(std::make_shared<BGLCommand>(*command));
            }
            edit.blocks.push_back(std::move(block));
            countAsEdited += runSize - (int64_t{last} - first + 1);
            startAt = int32_t{last} + 1;
        }
    } catch (...) {
        // The runs replaced before the failing search stay replaced.
        failure = std::current_exception();
    }
    editing::applyListEdit(items_, edit);
    if (failure) std::rethrow_exception(failure);
}

}  // namespace velmora
