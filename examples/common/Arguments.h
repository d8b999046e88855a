#pragma once

#include <cstddef>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Kalvio::Examples {

/// The command line of a program: words in their order and, anywhere between them, options "--name VALUE" and "--name".
/// What is read goes straight into the variables named here.
///
///     Arguments arguments;
///     arguments.AddWord(file);
///     arguments.AddText("--svg", picture);
///     arguments.AddPositive("--step", step);
class Arguments {
public:
    /// The next word, which is required.
    void AddWord(std::string& target) {
        words.push_back(&target);
        ++requiredWords;
    }
    /// The next word, after all that are required.
    void AddOptionalWord(std::string& target) { words.push_back(&target); }
    void AddFlag(const std::string& name, bool& target) { flags[name] = &target; }
    void AddText(const std::string& name, std::string& target);
    void AddNumber(const std::string& name, std::optional<double>& target);
    /// A number in (0, largest]; the target is a double or an optional one.
    template <class Target>
    void AddPositive(const std::string& name, Target& target, double largest = std::numeric_limits<double>::max()) {
        AddValue(name, [&target, largest](double value) {
            if (!(value > 0.0 && value <= largest)) return false;
            target = value;
            return true;
        });
    }
    /// `count` numbers, or up to `most`, with commas between; the option may be repeated.
    void AddNumbers(const std::string& name, std::size_t count, std::vector<std::vector<double>>& target,
                    std::size_t most = 0);

    /// @return false for an unknown option, a value that is missing or of the wrong kind, too few or too many words
    bool Read(const std::vector<std::string>& arguments) const;

private:
    /// `take` answers false for a number it cannot use.
    void AddValue(const std::string& name, std::function<bool(double)> take);

    std::vector<std::string*> words;
    std::size_t requiredWords = 0;
    std::map<std::string, bool*> flags;
    std::map<std::string, std::function<bool(const std::string&)>> options;
};

/// Reads the command line and runs the program.
/// @return what `run` returns; 2, with the usage or the message on stderr, for a command line that cannot be read and
///         for an InputError
int RunProgram(const char* name, const char* usage, const Arguments& arguments, int argc, char** argv,
               const std::function<int()>& run);

}  // namespace Kalvio::Examples
