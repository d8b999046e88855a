#include "common/Arguments.h"

#include "common/Csv.h"
#include "common/InputError.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace Kalvio::Examples {

void Arguments::AddText(const std::string& name, std::string& target) {
    options[name] = [&target](const std::string& value) {
        target = value;
        return true;
    };
}

void Arguments::AddNumber(const std::string& name, std::optional<double>& target) {
    AddValue(name, [&target](double value) {
        target = value;
        return true;
    });
}

void Arguments::AddValue(const std::string& name, std::function<bool(double)> take) {
    options[name] = [take = std::move(take)](const std::string& value) {
        const std::vector<double> numbers = ToNumbers(value);
        return numbers.size() == 1 && take(numbers[0]);
    };
}

void Arguments::AddNumbers(const std::string& name, std::size_t count, std::vector<std::vector<double>>& target,
                           std::size_t most) {
    options[name] = [&target, count, most = std::max(count, most)](const std::string& value) {
        target.push_back(ToNumbers(value));
        return target.back().size() >= count && target.back().size() <= most;
    };
}

bool Arguments::Read(const std::vector<std::string>& arguments) const {
    std::size_t wordsRead = 0;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (!argument.starts_with("--")) {
            if (wordsRead == words.size()) return false;
            *words[wordsRead++] = argument;
        } else if (const auto flag = flags.find(argument); flag != flags.end()) {
            *flag->second = true;
        } else {
            const auto option = options.find(argument);
            if (option == options.end() || ++i == arguments.size() || !option->second(arguments[i])) return false;
        }
    }
    return wordsRead >= requiredWords;
}

int RunProgram(const char* name, const char* usage, const Arguments& arguments, int argc, char** argv,
               const std::function<int()>& run) {
    constexpr int badInput = 2;
    if (!arguments.Read(std::vector<std::string>(argv + 1, argv + argc))) {
        std::fputs(usage, stderr);
        return badInput;
    }
    try {
        return run();
    } catch (const InputError& error) {
        std::fprintf(stderr, "%s: %s\n", name, error.what());
        return badInput;
    }
}

}  // namespace Kalvio::Examples
