#include <velmora/MDLObject.h>

#include "bgl/CommandSlots.h"
#include "foundation/Errors.h"
#include "foundation/NumberText.h"

namespace velmora {

namespace {

constexpr int32_t kDayVariable = 906;
constexpr int16_t kNoDate = -1;
constexpr int16_t kAfterEveryDay = 400;

}  // namespace

seasonalTextures MDLObject::readSeasonalDates(int16_t parent) const {
    if (!commandList_ || !textureList_) raisePlatformError(kObjectNotSet);
    using detail::CommandSlots;
    const KeyedCollection<BGLCommand>& commands = commandList_->commands();
    const velmora::TextureList& textures = *textureList_;

    seasonalTextures seasons;
    // The commands are walked with a 16-bit index.
    const int16_t count = numbers::narrow16(commands.Count());
    for (int32_t i = 1; i <= count; ++i) {
        const BGLCommand& command = *commands.at0(static_cast<std::size_t>(i - 1));
        if (command.opcode() != SET_MATERIAL) continue;
        const double number = CommandSlots::number(command, 1);
        if (number == -1) continue;
        const std::shared_ptr<texture> entry = textures.Item(numbers::toInt32(number + 1));
        if (entry->parent() != parent) continue;
        const int32_t variant = entry->textureVariant();
        if (variant < summer || variant > spring) raisePlatformError(kSubscriptOutOfRange);
        const auto v = static_cast<std::size_t>(variant);
        seasons.active[v] = true;
        // The date test, when there is one, stands directly in front of its SET_MATERIAL.
        const std::shared_ptr<BGLCommand> before = commands.Item(i - 1);
        if (before->opcode() == IFIN1 && CommandSlots::equalsInteger(*before, 1, kDayVariable)) {
            seasons.dayStart[v] = numbers::textToInt16(before->param(2));
            seasons.dayEnd[v] = numbers::textToInt16(before->param(3));
        } else {
            seasons.dayStart[v] = kNoDate;
            seasons.dayEnd[v] = kNoDate;
        }
    }

    int16_t earliest = kAfterEveryDay;
    int16_t latest = 0;
    for (std::size_t s = 0; s < 5; ++s) {
        if (!seasons.active[s] || seasons.dayStart[s] == kNoDate) continue;
        if (seasons.dayStart[s] < earliest) earliest = seasons.dayStart[s];
        if (seasons.dayEnd[s] > latest) latest = seasons.dayEnd[s];
    }
    if (earliest == kAfterEveryDay) {
        // No season has a date: the model isn't seasonal, however many variants it shows.
        seasons.active.fill(false);
        return seasons;
    }
    // A season without a test of its own is the one that runs over the new year.
    for (std::size_t s = 0; s < 5; ++s) {
        if (!seasons.active[s] || seasons.dayStart[s] != kNoDate) continue;
        seasons.dayStart[s] = numbers::narrow16(int32_t{latest} + 1);
        seasons.dayEnd[s] = numbers::narrow16(int32_t{earliest} - 1);
    }
    return seasons;
}

}  // namespace velmora
