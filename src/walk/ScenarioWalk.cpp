#include <velmora/Scenario.h>

#include "analysis/StreamTests.h"
#include "bgl/CommandSlots.h"
#include "foundation/Errors.h"
#include "foundation/Host.h"
#include "foundation/NumberText.h"
#include "walk/Walks.h"

#include <algorithm>
#include <vector>

namespace velmora::walk {

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
Transform spriteTurn(const BGLCommand& call, const Scenario& scenario) {
    const auto number = [&call](int index) {
        try {
            return CommandSlots::number(call, index);
        } catch (const Error&) {
            return 0.0;
        }
    };
    if (number(9) == variables::kWindHeading)
        return Transform::turnAboutVertical(scenario.windHeading());
    if (number(6) == 1 && scenario.viewerHeading()) {
        return Transform::turnAboutVertical(*scenario.viewerHeading());
    }
    return {};
}

// A transform whose matrix stands in the command: nine numbers row by row, then the translation.
Transform transformOf(const BGLCommand& command) {
    Transform transform;
    for (int i = 0; i < 12; ++i) {
        if (CommandSlots::isEmpty(command, i)) return {};
        transform.m[static_cast<std::size_t>(i)] =
            static_cast<float>(CommandSlots::number(command, i));
    }
    return transform;
}

[[noreturn]] void raiseEndless(int32_t position, const std::string& why) {
    Error error(100, "Velmora.MDLObject", "The walk of the command stream does not end");
    throw error.setCommand(position).setDetail(why);
}

// The calls under way, each with the depth of the transform stack it came with; the transforms
// in force go to the emitter whenever they change.
class CallStack {
  public:
    explicit CallStack(GeometryEmitter& emitter) : emitter_(emitter) {}

    void call(int32_t from, const Transform* turn) {
        if (calls_.size() >= kDeepestCalls)
            raiseEndless(from, "calls nest deeper than " + numbers::formatGrouped(kDeepestCalls));
        calls_.push_back({from + 1, transforms_.size()});
        if (turn) apply(*turn);
    }
    // Where the walk goes on after a BGL_RETURN: behind the call, or 0 (the end) at the top.
    int32_t back() {
        if (calls_.empty()) return 0;
        restore(calls_.back().transforms);
        const int32_t to = calls_.back().returnTo;
        calls_.pop_back();
        return to;
    }
    void apply(const Transform& t) {
        transforms_.push_back(transforms_.back().after(t));
        emitter_.transform(transforms_.back());
    }
    void endTransform() { restore(transforms_.size() - 1); }

  private:
    struct Call {
        int32_t returnTo;
        std::size_t transforms;  // depth of the transform stack at the call
    };
    void restore(std::size_t depth) {
        transforms_.resize(std::max<std::size_t>(depth, 1));
        emitter_.transform(transforms_.back());
    }

    GeometryEmitter& emitter_;
    std::vector<Call> calls_;
    std::vector<Transform> transforms_{Transform{}};
};

// Does what the command at `p` does and gives the position the walk goes on at.
int32_t step(const BGLCommand& command, int32_t p, const Scenario& scenario, CallStack& calls,
             GeometryEmitter& emitter) {
    const BGLOpcode opcode = command.opcode();
    if (detail::isTest(opcode)) {
        return holds(detail::readTest(command, false), scenario) ? p + 1
                                                                 : CommandSlots::jump(command, 0);
    }
    switch (opcode) {
        case jump:
        case BGL_JUMP_32:
            return CommandSlots::jump(command, 0);
        case BGL_CALL:
        case BGL_CALL_32:
            calls.call(p, nullptr);
            return CommandSlots::jump(command, 0);
        case SPRITE_VICALL: {
            const Transform turn = spriteTurn(command, scenario);
            calls.call(p, &turn);
            return CommandSlots::jump(command, 0);
        }
        case BGL_RETURN:
            return calls.back();
        case BGL_END:
            return 0;
        case BGL_TRANSFORM_MAT:
            calls.apply(transformOf(command));
            return p + 1;
        case BGL_TRANSFORM_END:
            calls.endTransform();
            return p + 1;
        default:
            emitter.emit(command, p);
            return p + 1;
    }
}

}  // namespace

// Follows the stream from its first command as the simulator would: tests decide where it goes,
// jumps and calls are taken, a return goes back to the command behind the call, BGL_END or a
// return from the top ends it, and only what lies on the way is emitted.
void followAsSimulated(const BGLCommandList& list, GeometryEmitter& emitter, GeometrySink& sink,
                       const Scenario& scenario) {
    const auto& commands = list.commands();
    const auto count = static_cast<int32_t>(commands.Count());
    CallStack calls(emitter);
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
            p = step(*commands.at0(static_cast<std::size_t>(p - 1)), p, scenario, calls, emitter);
        }
    } catch (Error& error) {
        throw error.setCommand(p);
    }
}

}  // namespace velmora::walk
