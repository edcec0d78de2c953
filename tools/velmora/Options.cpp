#include "Tool.h"

#include <cmath>

namespace tool {

namespace {

std::string rangeText(double low, double high, bool whole) {
    const auto text = [](double v) {
        std::string s = std::to_string(v);
        s.erase(s.find_last_not_of('0') + 1);
        if (s.back() == '.') s.pop_back();
        return s;
    };
    const std::string kind = whole ? "a whole number" : "a number";
    if (std::isinf(low) && std::isinf(high)) return kind;
    if (std::isinf(high)) return kind + " of " + text(low) + " or more";
    return kind + " from " + text(low) + " to " + text(high);
}

}  // namespace

CLI::Option* addRepeatable(CLI::App& command, const std::string& name,
                           std::vector<std::string>& values, const std::string& help) {
    return command.add_option(name, values, help + " (repeat the option for more)")
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

CLI::Validator numberFrom(double low, double high, bool whole) {
    return CLI::Validator(
        [=](std::string& text) -> std::string {
            try {
                std::size_t used = 0;
                const double value = std::stod(text, &used);
                if (used == text.size() && std::isfinite(value) && value >= low && value <= high &&
                    (!whole || value == std::floor(value))) {
                    return "";
                }
            } catch (const std::exception&) {
            }
            return "give " + rangeText(low, high, whole) + ", not '" + text + "'";
        },
        rangeText(low, high, whole));
}

}  // namespace tool
