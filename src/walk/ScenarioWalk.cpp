#include <velmora/DrawListSink.h>
#include <velmora/MDLObject.h>
#include <velmora/Scenario.h>

#include "bgl/CommandSlots.h"
#include "analysis/StreamTests.h"
#include "foundation/Errors.h"
#include "foundation/Host.h"
#include "foundation/NumberText.h"
#include "walk/DrawEmitter.h"

#include <vector>

namespace velmora {

namespace {

using detail::CommandSlots;
using detail::TestKind;

// A size s at a distance d covers s * kPixelsPerUnit / d pixels: a view 768 pixels high with a
// vertical field of 60 degrees (384 / tan 30 degrees).
constexpr double kPixelsPerUnit = 665.1;
// A walk longer than this many steps per command loops; deeper calls than this recurse.
constexpr int64_t kStepsPerCommand = 64;
constexpr std::size_t kDeepestCalls = 1024;

bool holds(const detail::TestReading& test, const Scenario& scenario) {
    switch (test.kind) {
        case TestKind::Range:
            for (const detail::RangeTerm& range : test.ranges) {
                const int32_t value = scenario.value(range.variable);
                if (value < range.low || value > range.high) return false;
            }
            return true;
        case TestKind::Mask:
            return (scenario.value(test.variable) & test.mask) != 0;
        case TestKind::Size:
            if (!scenario.viewingDistance() || *scenario.viewingDistance() <= 0) return true;
            return test.size * kPixelsPerUnit / *scenario.viewingDistance() >= test.pixels;
        default:
            return true;
    }
}

// The turn a SPRITE_VICALL gives the part it calls: to face the viewer, or with the wind.
walk::Transform spriteTurn(const BGLCommand& call, const Scenario& scenario) {
    const auto number = [&call](int index) {
        try {
            return CommandSlots::number(call, index);
        } catch (const Error&) {
            return 0.0;
        }
    };
    if (number(9) == variables::kWindHeading)
        return walk::Transform::turnAboutVertical(scenario.windHeading());
    if (number(6) == 1 && scenario.viewerHeading()) {
        return walk::Transform::turnAboutVertical(*scenario.viewerHeading());
    }
    return {};
}

// A transform whose matrix stands in the command: nine numbers row by row, then the translation.
walk::Transform transformOf(const BGLCommand& command) {
    walk::Transform transform;
    for (int i = 0; i < 12; ++i) {
        if (detail::CommandSlots::isEmpty(command, i)) return {};
        transform.m[static_cast<std::size_t>(i)] =
            static_cast<float>(detail::CommandSlots::number(command, i));
    }
    return transform;
}

[[noreturn]] void raiseEndless(int32_t position, const std::string& why) {
    Error error(100, "Velmora.MDLObject", "The walk of the command stream does not end");
    throw error.setCommand(position).setDetail(why);
}

}  // namespace

// Follows the stream from its first command as the simulator would: tests decide where it goes,
// jumps and calls are taken, a return goes back to the command behind the call, BGL_END or a
// return from the top ends it, and only what lies on the way is drawn.
void MDLObject::glGenerateDrawList(DrawListSink& sink, const Scenario& scenario) {
    const velmora::BGLCommandList& list = required(commandList_);
    walk::DrawEmitter emitter(required(materialList_), required(textureList_),
                              required(vertexList_), sink);
    const auto& commands = list.commands();
    const auto count = static_cast<int32_t>(commands.Count());

    drawListId_ = numbers::narrow16(static_cast<int64_t>(sink.glGenLists(1)));
    sink.glNewList(static_cast<uint32_t>(drawListId_), walk::kCompile);

    struct Call {
        int32_t returnTo;
        std::size_t transforms;  // depth of the transform stack at the call
    };
    std::vector<Call> calls;
    std::vector<walk::Transform> transforms{walk::Transform{}};
    const auto apply = [&](const walk::Transform& t) {
        transforms.push_back(transforms.back().after(t));
        emitter.transform(transforms.back());
    };
    const auto restore = [&](std::size_t depth) {
        transforms.resize(std::max<std::size_t>(depth, 1));
        emitter.transform(transforms.back());
    };

    const int64_t mostSteps = kStepsPerCommand * (int64_t{count} + 16);
    int64_t steps = 0;
    int32_t p = 1;
    try {
        while (p >= 1 && p <= count) {
            yieldToHost();
            if (++steps > mostSteps) {
                raiseEndless(p, "it took more than " + numbers::formatGrouped(mostSteps) +
                                    " steps; the stream loops");
            }
            sink.atCommand(p);
            const BGLCommand& command = *commands.at0(static_cast<std::size_t>(p - 1));
            const BGLOpcode opcode = command.opcode();
            if (detail::isTest(opcode)) {
                p = holds(detail::readTest(command, false), scenario)
                        ? p + 1
                        : CommandSlots::jump(command, 0);
                continue;
            }
            switch (opcode) {
                case jump:
                case BGL_JUMP_32:
                    p = CommandSlots::jump(command, 0);
                    break;
                case BGL_CALL:
                case BGL_CALL_32:
                case SPRITE_VICALL:
                    if (calls.size() >= kDeepestCalls) {
                        raiseEndless(
                            p, "calls nest deeper than " + numbers::formatGrouped(kDeepestCalls));
                    }
                    calls.push_back({p + 1, transforms.size()});
                    if (opcode == SPRITE_VICALL) apply(spriteTurn(command, scenario));
                    p = CommandSlots::jump(command, 0);
                    break;
                case BGL_RETURN:
                    if (calls.empty()) {
                        p = 0;
                        break;
                    }
                    restore(calls.back().transforms);
                    p = calls.back().returnTo;
                    calls.pop_back();
                    break;
                case BGL_END:
                    p = 0;
                    break;
                case BGL_TRANSFORM_MAT:
                    apply(transformOf(command));
                    ++p;
                    break;
                case BGL_TRANSFORM_END:
                    restore(transforms.size() - 1);
                    ++p;
                    break;
                default:
                    emitter.emit(command);
                    ++p;
                    break;
            }
        }
    } catch (Error& error) {
        throw error.setCommand(p);
    }
    sink.glEndList();
}

void MDLObject::walkInto(DrawListSink& sink, const std::optional<Scenario>& scenario) {
    const int16_t kept = drawListId_;
    try {
        if (scenario) {
            glGenerateDrawList(sink, *scenario);
        } else {
            glGenerateDrawList(sink);
        }
    } catch (...) {
        drawListId_ = kept;
        throw;
    }
    drawListId_ = kept;
}

}  // namespace velmora
