#include "analysis/ConditionReading.h"

#include <velmora/SceneryVariables.h>

#include "foundation/Errors.h"
#include "foundation/NumberText.h"

namespace velmora::analysis {

namespace {

constexpr double kRotateToUser = 1;

std::shared_ptr<Condition> newCondition(CondType type, const std::string& var = "", int16_t min = 0,
                                        int16_t max = 0) {
    auto condition = std::make_shared<Condition>();
    condition->cType(type);
    condition->var(var);
    condition->min(min);
    condition->max(max);
    return condition;
}

// How the tests combine, read off the commands just in front of the guarded call at `end`.
eMultiCondition foldedCombination(const BGLCommandList& list, int32_t end) {
    if (list.Item(end - 1)->opcode() != BGL_JUMP_32) return mAND;
    if (list.Item(end - 2)->opcode() == BGL_JUMP_32) return mOR;
    return list.Item(end - 3)->opcode() == BGL_JUMP_32 ? mNOT : mNOR;
}

}  // namespace

std::shared_ptr<ConditionList> readConditions(const BGLCommandList& list) {
    auto conditions = std::make_shared<ConditionList>();
    // The stretch is walked with a 16-bit index: a guarded call beyond 32,767 overflows, and a
    // list without one runs off its end (error 9 from the lookup).
    int16_t i = 1;
    for (;; i = numbers::narrow16(int32_t{i} + 1)) {
        if (i > list.Count()) {
            throw platformError(kSubscriptOutOfRange)
                .setCommand(i)
                .setDetail(
                    "no BGL_CALL_32 or SPRITE_VICALL ends the conditions at the head of "
                    "the stream");
        }
        const std::shared_ptr<BGLCommand> command = list.Item(i);
        const BGLOpcode opcode = command->opcode();
        if (opcode == BGL_CALL_32) break;
        if (opcode == IFIN1) {
            conditions->Add(newCondition(Between, command->param(1),
                                         numbers::textToInt16(command->param(2)),
                                         numbers::textToInt16(command->param(3))));
        } else if (opcode == IFMSK) {
            conditions->Add(
                newCondition(mask, command->param(1), numbers::textToInt16(command->param(2))));
        } else if (opcode == SPRITE_VICALL) {
            if (numbers::parseNumber(command->param(9)) == variables::kWindHeading) {
                conditions->Add(newCondition(RotWind));
            } else if (numbers::parseNumber(command->param(6)) == kRotateToUser) {
                conditions->Add(newCondition(RotUser));
            }
            break;
        }
    }
    conditions->commandStart(1);
    conditions->commandEnd(i);
    if (conditions->Count() > 1) conditions->multiCondition(foldedCombination(list, i));
    return conditions;
}

}  // namespace velmora::analysis
