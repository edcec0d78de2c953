#include <velmora/MDLObject.h>

#include "bgl/CommandSlots.h"
#include "bgl/SeasonalBlockSearch.h"
#include "foundation/Errors.h"
#include "foundation/NumberText.h"

namespace velmora {

namespace {

constexpr int16_t kNoDate = -1;
constexpr int16_t kAfterEveryDay = 400;

using detail::CommandSlots;

// What the command at `i` says of the seasons of group `parent`.
void readSeasonOf(const KeyedCollection<BGLCommand>& commands, const TextureList& textures,
                  int32_t i, int16_t parent, seasonalTextures& seasons) {
    const BGLCommand& command = *commands.at0(static_cast<std::size_t>(i - 1));
    if (command.opcode() != SET_MATERIAL) return;
    const double number = CommandSlots::number(command, 1);
    if (number == -1) return;
    const int32_t position = numbers::toInt32(number + 1);
    if (position < 1 || position > textures.Count()) {
        throw platformError(kSubscriptOutOfRange)
            .setTexture(position)
            .setDetail("SET_MATERIAL names texture " + numbers::formatGrouped(position - 1) +
                       ", but the model has " + numbers::formatGrouped(textures.Count()));
    }
    const texture& entry = *textures.elements().at0(static_cast<std::size_t>(position - 1));
    if (entry.parent() != parent) return;
    const int32_t variant = entry.textureVariant();
    if (variant < summer || variant > spring) {
        throw platformError(kSubscriptOutOfRange)
            .setTexture(position)
            .setDetail("the texture's season " + numbers::formatInteger(variant) +
                       " is none of 0 to 4");
    }
    const auto v = static_cast<std::size_t>(variant);
    seasons.active[v] = true;
    // The date test, when there is one, stands directly in front of its SET_MATERIAL.
    const std::shared_ptr<BGLCommand> before = commands.Item(i - 1);
    if (detail::isDayTest(*before)) {
        seasons.dayStart[v] = numbers::textToInt16(before->param(2));
        seasons.dayEnd[v] = numbers::textToInt16(before->param(3));
    } else {
        seasons.dayStart[v] = kNoDate;
        seasons.dayEnd[v] = kNoDate;
    }
}

}  // namespace

seasonalTextures MDLObject::readSeasonalDates(int16_t parent) const {
    if (!commandList_ || !textureList_) raisePlatformError(kObjectNotSet);
    const KeyedCollection<BGLCommand>& commands = commandList_->commands();
    const velmora::TextureList& textures = *textureList_;

    seasonalTextures seasons;
    // The commands are walked with a 16-bit index.
    const int16_t count = numbers::narrow16(commands.Count());
    int32_t i = 1;
    try {
        for (; i <= count; ++i)
            readSeasonOf(commands, textures, i, parent, seasons);
    } catch (Error& error) {
        throw error.setCommand(i);
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
