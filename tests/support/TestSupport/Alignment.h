#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

/// Walks over two lists, the one expected and the one that came, so that one missing entry does not
/// put all later ones in the wrong: along their longest common sequence.
/// \param matches     of an expected and a recorded index
/// \param onBoth      called with both indices of a pair that matches
/// \param onMissing   called with the index of an expected entry that has not come
/// \param onFurther   called with the index of an entry that nobody expected
template<typename Matches, typename OnBoth, typename OnMissing, typename OnFurther>
void align(int expectedCount, int recordedCount, Matches matches, OnBoth onBoth,
           OnMissing onMissing, OnFurther onFurther)
{
    std::vector<std::vector<int>> common(size_t(expectedCount) + 1,
                                         std::vector<int>(size_t(recordedCount) + 1, 0));
    for (int i = expectedCount - 1; i >= 0; --i)
    {
        for (int j = recordedCount - 1; j >= 0; --j)
        {
            common[size_t(i)][size_t(j)] =
                matches(i, j)
                    ? common[size_t(i) + 1][size_t(j) + 1] + 1
                    : std::max(common[size_t(i) + 1][size_t(j)], common[size_t(i)][size_t(j) + 1]);
        }
    }
    int i = 0;
    int j = 0;
    while (i < expectedCount || j < recordedCount)
    {
        if (i < expectedCount && j < recordedCount && matches(i, j))
        {
            onBoth(i++, j++);
        }
        else if (j == recordedCount || (i < expectedCount && common[size_t(i) + 1][size_t(j)] >=
                                                                 common[size_t(i)][size_t(j) + 1]))
        {
            onMissing(i++);
        }
        else
        {
            onFurther(j++);
        }
    }
}
