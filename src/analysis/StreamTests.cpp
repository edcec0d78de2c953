#include "analysis/StreamTests.h"

#include <velmora/BGLOpcodeDictionary.h>

#include "bgl/CommandStream.h"
#include "foundation/Errors.h"
#include "foundation/NumberText.h"

namespace velmora::detail {

namespace {

// Every parameter behind the jump, for the tests whose parameters are only shown.
std::string withParameters(const BGLCommand& command) {
    const BGLCommandDictEntry* row = BGLOpcodeDictionary::row(command.opcode());
    std::string text = BGLOpcodeDictionary::nameOf(command.opcode()) + "(";
    const int count = row != nullptr ? row->numParam : 0;
    for (int16_t i = 1; i < count; ++i) {
        if (i > 1) text += ", ";
        text += command.param(i);
    }
    return text + ")";
}

void finish(TestReading& reading) {
    if (reading.kind == TestKind::Range && reading.ranges.size() == 1) {
        const RangeTerm& r = reading.ranges.front();
        reading.text = rangeText(r.variable, r.low, r.high);
        reading.negated = numbers::formatInteger(r.variable) + " not in " +
                          numbers::formatInteger(r.low) + ".." + numbers::formatInteger(r.high);
        return;
    }
    if (reading.kind == TestKind::Range) {
        // Built front to back in a new string: GCC 12 warns falsely (-Wrestrict) about
        // assigning a literal to the reading's text and about prepending to a temporary.
        std::string text(1, '(');
        for (std::size_t i = 0; i < reading.ranges.size(); ++i) {
            const RangeTerm& r = reading.ranges[i];
            if (i > 0) text += " and ";
            text += rangeText(r.variable, r.low, r.high);
        }
        reading.text = std::move(text) + ")";
    } else if (reading.kind == TestKind::Mask) {
        reading.text = maskText(reading.variable, reading.mask);
    } else if (reading.kind == TestKind::Size) {
        reading.text = std::string(reading.vertical ? "size(" : "hsize(") +
                       numbers::formatInteger(reading.size) +
                       ") >= " + numbers::formatInteger(reading.pixels) + " px";
    }
    const bool standsAlone = reading.text.front() == '(' || reading.kind == TestKind::Place ||
                             reading.kind == TestKind::Other;
    reading.negated = standsAlone ? "not " + reading.text : "not (" + reading.text + ")";
}

}  // namespace

bool isTest(int32_t opcode) {
    switch (opcode) {
        case IFIN1:
        case IFIN2:
        case IFIN3:
        case IFMSK:
        case IFSIZEV:
        case IFSIZEH:
        case IFINBOXP:
        case IFIN_BOX_PLANE:
        case IFIN_INSTANCED_BOX_PLANE:
        case SEPARATION_PLANE:
        case IFINF1:
            return true;
        default:
            return false;
    }
}

bool isPlainJump(int32_t opcode) {
    return opcode == jump || opcode == BGL_JUMP_32;
}

bool endsWalk(int32_t opcode) {
    return opcode == BGL_RETURN || opcode == BGL_END;
}

std::string rangeText(int32_t variable, int32_t low, int32_t high) {
    return numbers::formatInteger(variable) + " in " + numbers::formatInteger(low) + ".." +
           numbers::formatInteger(high);
}

std::string maskText(int32_t variable, int32_t mask) {
    std::string text(1, '(');
    text += numbers::formatInteger(variable);
    text += " & ";
    text += numbers::formatInteger(mask);
    return text + ")";
}

TestReading readTest(const BGLCommand& command, bool withText) {
    TestReading reading;
    try {
        const auto at = [&command](int index) { return parameterAsInt32(command, index); };
        switch (command.opcode()) {
            case IFIN1:
            case IFIN2:
            case IFIN3: {
                const int terms = command.opcode() == IFIN1 ? 1 : command.opcode() == IFIN2 ? 2 : 3;
                reading.kind = TestKind::Range;
                for (int t = 0; t < terms; ++t)
                    reading.ranges.push_back({at(1 + 3 * t), at(2 + 3 * t), at(3 + 3 * t)});
                break;
            }
            case IFMSK:
                reading.kind = TestKind::Mask;
                reading.variable = at(1);
                reading.mask = at(2);
                break;
            case IFSIZEV:
            case IFSIZEH:
                reading.kind = TestKind::Size;
                reading.size = at(1);
                reading.pixels = at(2);
                reading.vertical = command.opcode() == IFSIZEV;
                break;
            case IFINBOXP:
            case IFIN_BOX_PLANE:
            case IFIN_INSTANCED_BOX_PLANE:
            case SEPARATION_PLANE:
                reading.kind = TestKind::Place;
                break;
            default:
                break;
        }
    } catch (const Error&) {
        // A parameter that is no number leaves the test without a known meaning.
        reading = TestReading{};
    }
    if (!withText) return reading;
    if (reading.kind == TestKind::Place || reading.kind == TestKind::Other) {
        reading.text = withParameters(command);
    }
    finish(reading);
    return reading;
}

}  // namespace velmora::detail
