#include <velmora/MDLObject.h>

#include "bgl/CommandSlots.h"
#include "editing/ListRebuild.h"
#include "foundation/Errors.h"
#include "foundation/NumberText.h"

#include <exception>
#include <limits>

namespace velmora {

namespace {

// Mask tests on variables above this number are kept in front of a light.
constexpr double kHighestDroppedVariable = 200;

}  // namespace

// The lights are freed front to back, as the single removals with their repairs would do it;
// the removals are collected first and the list is rebuilt in one pass. A walk back from a light
// never passes the light in front of it, so the positions of the unchanged list serve.
void MDLObject::fixLights() {
    cleanDICT();
    if (!commandList_) raisePlatformError(kObjectNotSet);
    using detail::CommandSlots;
    KeyedCollection<BGLCommand>& commands = commandList_->commands();
    const auto count = static_cast<int64_t>(commands.Count());

    editing::ListEdit edit;
    int64_t removedSoFar = 0;  // in front of the light being freed
    std::exception_ptr failure;
    try {
        for (int64_t light = 1; light <= count; ++light) {
            if (commands.at0(static_cast<std::size_t>(light - 1))->opcode() != BGL_LIGHT) continue;
            int64_t removedInWalk = 0;
            for (int64_t before = light - 1;; --before) {
                // Position 0 is the lookup in front of the list's head.
                const std::shared_ptr<BGLCommand> command = commands.Item(before);
                const BGLOpcode opcode = command->opcode();
                if (opcode != VAR_BASE_OVERRIDE && opcode != IFMSK) break;
                if (opcode == IFMSK &&
                    CommandSlots::number(*command, 1) > kHighestDroppedVariable) {
                    continue;
                }
                if (edit.removal.empty()) edit.removal.assign(static_cast<std::size_t>(count), 0);
                // The repair names the position of the command behind the removed one, in 16
                // bits; beyond that the removal is done and its repair overflows.
                const int64_t behind = before - removedSoFar + 1;
                if (behind > std::numeric_limits<int16_t>::max()) {
                    edit.removal[static_cast<std::size_t>(before - 1)] =
                        editing::ListEdit::RemovedUnrepaired;
                    numbers::narrow16(behind);
                }
                edit.removal[static_cast<std::size_t>(before - 1)] = editing::ListEdit::Removed;
                ++removedInWalk;
            }
            removedSoFar += removedInWalk;
        }
    } catch (...) {
        // What was removed before the failure stays removed.
        failure = std::current_exception();
    }
    editing::applyListEdit(commands, edit);
    if (failure) std::rethrow_exception(failure);
}

}  // namespace velmora
