#pragma once

#include <velmora/BGLOpcodeDictionary.h>
#include <velmora/KeyedCollection.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace velmora {

class BGLCommand;
class BGLCommandList;
class ConditionList;

// What decides whether a model's guarded call (its first BGL_CALL_32 or SPRITE_VICALL) is drawn,
// worked out by following the stream from its first command: a test that holds goes on with the
// next command, one that fails goes to its jump destination, a jump goes to its destination, and
// BGL_RETURN or BGL_END ends the walk. Equal tests are one term of the formula.
class GuardAnalysis {
  public:
    // One test in front of the guarded call.
    struct Test {
        int32_t position = 0;  // 1-based command position
        BGLOpcode opcode = EOF_;
        std::string text;        // the test as a term: "798 in 3..5", "(120 & 1)"
        bool reachable = false;  // some path from the first command reaches it
        bool editable = false;   // IFIN1 or IFMSK: the condition editor reads and writes it
    };
    // A command in front of the guarded call that is neither a test nor a plain jump.
    struct Other {
        int32_t position = 0;
        BGLOpcode opcode = EOF_;
    };

    explicit GuardAnalysis(const BGLCommandList& commands);
    ~GuardAnalysis();
    GuardAnalysis(const GuardAnalysis&) = delete;
    GuardAnalysis& operator=(const GuardAnalysis&) = delete;
    GuardAnalysis(GuardAnalysis&&) noexcept;
    GuardAnalysis& operator=(GuardAnalysis&&) noexcept;

    // 0 when the stream has no BGL_CALL_32 or SPRITE_VICALL.
    int32_t guardedCall() const { return guardedCall_; }
    BGLOpcode callOpcode() const { return callOpcode_; }
    // "user" or "wind" for a SPRITE_VICALL that turns the model, else "".
    const std::string& rotation() const { return rotation_; }

    // When the call is reached: "always", "never", or a formula of the tests' terms such as
    // "798 in 3..5 or (120 & 1)".
    const std::string& formula() const { return formula_; }
    const std::vector<Test>& tests() const { return tests_; }
    const std::vector<Other>& others() const { return others_; }
    // False when there is no guarded call, or the stretch holds too many different tests to work
    // the formula out.
    bool workedOut() const { return workedOut_; }

    // What the condition editor (getConditions) reads, as a formula; "" when it can't read the
    // stream at all.
    const std::string& editorFormula() const { return editorFormula_; }
    // True when getConditions and addCondition can rewrite this guard without changing what it
    // means or losing a command: every test is one the editor reads, every test is reachable,
    // nothing else stands in the stretch, and the reading means what the stream does.
    bool editorCanRewrite() const { return editorCanRewrite_; }
    // Why the condition editor can't rewrite the guard as it is, a reason a line ("command 1
    // (IFIN2) is a test the condition editor does not write back"); empty when it can.
    std::vector<std::string> editorLimits() const;

    // True when the guard means what `conditions` stands for: every test holds under mAND, one
    // holds under mOR, none under mNOT, not every one under mNOR (rotations are no tests).
    bool means(const ConditionList& conditions) const;
    // True when both guards mean the same.
    bool meansTheSameAs(const GuardAnalysis& other) const;
    // True when some values of the variables reach the call.
    bool canHold() const;

    // Values that make the guard hold, changing as few variables as possible from what `current`
    // gives each; the variables in `fixed` keep theirs. The variables changed with their new
    // values (none when the guard holds as it is, or there is no guarded call); nothing when no
    // values the guard's tests ask for make it hold. Tests of size, place or no known meaning
    // count as holding.
    std::optional<std::map<int32_t, int32_t>> valuesToHold(
        const std::function<int32_t(int32_t variable)>& current,
        const std::set<int32_t>& fixed = {}) const;

    // The variables the guard's tests of ranges and masks look at, in increasing order; none when
    // the guard was not worked out.
    std::vector<int32_t> variables() const;

    // The formula that `conditions` stands for, in the terms this analysis uses.
    static std::string formulaOf(const ConditionList& conditions);
    // The term of a test command as formulas write it ("798 in 3..5"); "" for no test.
    static std::string termOf(const BGLCommand& test);

  private:
    struct Function;
    struct Atoms;

    void findGuardedCall(const KeyedCollection<BGLCommand>& commands);
    Atoms readStretch(const KeyedCollection<BGLCommand>& commands);
    void followStretch(const KeyedCollection<BGLCommand>& commands, const Atoms& atoms);
    void readAsTheEditorDoes(const BGLCommandList& list);

    int32_t guardedCall_ = 0;
    BGLOpcode callOpcode_ = EOF_;
    std::string rotation_;
    std::string formula_;
    std::vector<Test> tests_;
    std::vector<Other> others_;
    bool workedOut_ = true;
    std::string editorFormula_;
    bool editorCanRewrite_ = false;
    std::unique_ptr<Function> function_;
};

}  // namespace velmora
