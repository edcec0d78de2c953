#include <velmora/BGLCommandList.h>
#include <velmora/ConditionList.h>

#include "foundation/Errors.h"
#include "foundation/NumberText.h"

namespace velmora {

namespace {

// A new test or jump: parameter 0 (the byte offset) stays empty until the list is encoded.
std::shared_ptr<BGLCommand> newJumping(BGLOpcode opcode, int32_t jumpDestination) {
    auto command = std::make_shared<BGLCommand>();
    command->opcode(opcode);
    command->jumpDest(0, jumpDestination);
    return command;
}

std::shared_ptr<BGLCommand> newRangeTest(const Condition& condition) {
    auto test = newJumping(IFIN1, 0);
    test->param(1, condition.var());
    test->param(2, numbers::formatInteger(condition.min()));
    test->param(3, numbers::formatInteger(condition.max()));
    return test;
}

std::shared_ptr<BGLCommand> newMaskTest(const Condition& condition) {
    auto test = newJumping(IFMSK, 0);
    test->param(1, condition.var());
    test->param(2, numbers::formatInteger(condition.min()));
    return test;
}

// Turns the guarded call into a sprite call that faces the user or turns with the wind. Its
// jumpDest(0), the call target, is kept.
void makeSpriteCall(BGLCommand& call, CondType rotation) {
    call.opcode(SPRITE_VICALL);
    for (int16_t p = 0; p <= 9; ++p)
        call.param(p, "0");
    if (rotation == RotUser) {
        call.param(6, "1");
    } else {
        call.param(9, "3188");
    }
}

}  // namespace

// Every single insertion and removal is followed at once by its repair of the jump
// destinations, so each step sees the list exactly as the one before left it. Only a handful
// of commands move, so the repairs stay cheap.
void BGLCommandList::addCondition(const std::shared_ptr<ConditionList>& cList) {
    if (!cList) raisePlatformError(kObjectNotSet);
    const ConditionList& conditions = *cList;
    const int32_t S = conditions.commandStart();
    const int32_t E = conditions.commandEnd();
    const eMultiCondition combination = conditions.multiCondition();

    int16_t rotations = 0;
    for (const auto& condition : conditions) {
        if (condition->cType() == RotUser || condition->cType() == RotWind) {
            rotations = numbers::narrow16(int32_t{rotations} + 1);
        }
    }

    const auto insertAt = [this](std::shared_ptr<BGLCommand> command, int32_t at) {
        Add(std::move(command), "", at);
        updateJumpDest(numbers::narrow16(at));
    };

    for (int32_t k = 0; k < E - S; ++k) {
        Remove(S);
        updateJumpDest(numbers::narrow16(S), true);
    }

    int16_t n = 0;
    if (conditions.Count() - rotations > 0 && (combination == mOR || combination == mNOR)) {
        auto opening = newJumping(BGL_JUMP_32, S + 1);
        n = numbers::narrow16(int32_t{n} + 1);
        insertAt(std::move(opening), S);
    }

    bool rotated = false;
    for (const auto& condition : conditions) {
        switch (condition->cType()) {
            case Between: {
                n = numbers::narrow16(int32_t{n} + 1);
                auto test = newRangeTest(*condition);
                switch (combination) {
                    case mAND:
                        test->jumpDest(0, S + n);
                        insertAt(std::move(test), S + n - 1);
                        break;
                    case mOR:
                    case mNOT: {
                        // The jump behind the test leads to the guarded call (mOR) or past it.
                        const int32_t behind = combination == mOR ? S + n - 1 : S + n;
                        insertAt(newJumping(BGL_JUMP_32, behind), S);
                        n = numbers::narrow16(int32_t{n} + 1);
                        test->jumpDest(0, S + 1);
                        insertAt(std::move(test), S);
                        break;
                    }
                    case mNOR:
                        test->jumpDest(0, S + n - 1);
                        insertAt(std::move(test), S);
                        break;
                }
                break;
            }
            case mask: {
                // A mask test goes directly in front of the guarded call, whatever the combination.
                n = numbers::narrow16(int32_t{n} + 1);
                auto test = newMaskTest(*condition);
                test->jumpDest(0, S + n);
                insertAt(std::move(test), S + n - 1);
                break;
            }
            case RotUser:
            case RotWind:
                makeSpriteCall(*Item(S + n), condition->cType());
                rotated = true;
                break;
        }
    }

    if (!rotated) Item(S + n)->opcode(BGL_CALL_32);
}

}  // namespace velmora
