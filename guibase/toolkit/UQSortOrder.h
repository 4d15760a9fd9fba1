#pragma once

// A sort direction as a list header shows it: ASCENDING (1) is the up arrow, every other value the down
// arrow.
class UQSortOrder {
public:
    static const int ASCENDING = 1;
    static const int DESCENDING = 0;

    constexpr UQSortOrder(int _nValue = ASCENDING) noexcept : m_nValue(_nValue) {}
    constexpr int mf_getValue() const noexcept { return m_nValue; }
    constexpr int mf_isAscending() const noexcept { return m_nValue == ASCENDING; }

private:
    int m_nValue;
};
