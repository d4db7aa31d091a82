// Put in front of every mutated source. One build holds all mutants; the environment chooses the one that lives.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <type_traits>
#include <utility>

namespace mutation
{

// True when the mutant of this number lives. With MUTATION_TRACE set, notes each number that the process comes past.
inline bool lives(int number)
{
    static const char* const chosenText = std::getenv("MUTATION");
    static const int chosen = chosenText == nullptr ? 0 : std::atoi(chosenText);
    static const char* const trace = std::getenv("MUTATION_TRACE");
    if (trace != nullptr)
    {
        constexpr int most = 10000;
        static bool isSeen[most] = {};
        if (number < most && !isSeen[number])
        {
            isSeen[number] = true;
            if (std::FILE* const file = std::fopen(trace, "a"))
            {
                std::fprintf(file, "%d\n", number);
                std::fclose(file);
            }
        }
    }
    return number == chosen;
}

// "a == b" is written "a == Comparison{n} == b": the first step keeps a, the second compares. Both steps have the
// precedence of the original, so that nothing around it changes.
struct Comparison
{
    int number;
};

template<typename Left>
struct Waiting
{
    const Left& left;
    int number;
};

#define MUTATION_COMPARISON(sign, mutated)                                                         \
    template<typename Left>                                                                        \
    Waiting<Left> operator sign(const Left& left, Comparison comparison)                           \
    {                                                                                              \
        return {left, comparison.number};                                                          \
    }                                                                                              \
    template<typename Left, typename Right>                                                        \
    bool operator sign(const Waiting<Left>& waiting, const Right& right)                           \
    {                                                                                              \
        return lives(waiting.number) ? bool(waiting.left mutated right)                            \
                                     : bool(waiting.left sign right);                              \
    }

MUTATION_COMPARISON(==, !=)
MUTATION_COMPARISON(!=, ==)
MUTATION_COMPARISON(<, <=)
MUTATION_COMPARISON(<=, <)
MUTATION_COMPARISON(>, >=)
MUTATION_COMPARISON(>=, >)

#undef MUTATION_COMPARISON

} // namespace mutation
