// Query data records for the search tests: plain ones, ones whose state can change after they were
// handed over, and ones whose cloning fails.
#pragma once

#include "interfaces/korarchiver.h"

#include "support/LogCheck.h"
#include "support/TestTime.h"

#include <atomic>

namespace search_test {

constexpr std::uint32_t S = UQQueryData::FLAG_SECURITY;
constexpr std::uint32_t A = UQQueryData::FLAG_AD_STREAMS;
constexpr std::uint32_t E = UQQueryData::FLAG_EVENT_BASED;
constexpr std::uint32_t P = UQQueryData::FLAG_PROTECTED;
constexpr std::uint32_t D = UQQueryData::FLAG_DELETION_STARTED;

inline UQFileTime writeTime() {
    return fileTime(2024, 3, 7, 14, 5, 9);
}
inline UQExpiryTime noExpiry() {
    return UQExpiryTime{0};
}
inline UQExpiryTime expiresOn() {
    return UQExpiryTime{fileTime(2025, 3, 7).mf_getValue()};
}

inline UQQueryData record(const wchar_t* path, std::uint32_t version, std::uint32_t flags = 0,
                          UQExpiryTime expiry = UQExpiryTime{0}, UQQueryData::AccessKey access = {1, 0}) {
    return UQQueryData(path, CString(), version, writeTime(), UQFileSize(1000 + version), flags, expiry,
                       access);
}

inline UQQueryData* newRecord(const wchar_t* path, std::uint32_t version, std::uint32_t flags = 0,
                              UQExpiryTime expiry = UQExpiryTime{0}, UQQueryData::AccessKey access = {1, 0}) {
    return record(path, version, flags, expiry, access).mf_clone();
}

// Counts the records alive, so that tests see who deletes what.
class CountedRecord : public UQQueryData {
public:
    explicit CountedRecord(const UQQueryData& data) : UQQueryData(data) { ++alive(); }
    CountedRecord(const CountedRecord& other) : UQQueryData(other) { ++alive(); }
    ~CountedRecord() override { --alive(); }
    UQQueryData* mf_clone() const override { return new CountedRecord(*this); }
    static std::atomic<int>& alive() {
        static std::atomic<int> n{0};
        return n;
    }
};

// A record whose state the test changes after it was handed over; clones share the state.
class LiveRecord : public UQQueryData {
public:
    struct State {
        int bEventBased = 0;
        int bDeletionStarted = 0;
        int bProtected = 0;
        std::uint64_t uExpiry = 0;
    };
    LiveRecord(const UQQueryData& data, State* pState) : UQQueryData(data), m_pState(pState) {}
    UQQueryData* mf_clone() const override { return new LiveRecord(*this); }
    int mf_isEventBased() const override { return m_pState->bEventBased; }
    int mf_isDeletionStarted() const override { return m_pState->bDeletionStarted; }
    int mf_isProtected() const override { return m_pState->bProtected; }
    UQExpiryTime mf_getExpiryTime() const override { return UQExpiryTime{m_pState->uExpiry}; }

private:
    State* m_pState;
};

// Cloning throws the category given, as a backend record that cannot be copied would.
class FailingCloneRecord : public UQQueryData {
public:
    FailingCloneRecord(const UQQueryData& data, const UQErrnoValue& error)
        : UQQueryData(data), m_error(error) {}
    UQQueryData* mf_clone() const override { throw UQErrno(m_error); }

private:
    const UQErrnoValue& m_error;
};

// Cloning hands back nothing.
class NullCloneRecord : public UQQueryData {
public:
    explicit NullCloneRecord(const UQQueryData& data) : UQQueryData(data) {}
    UQQueryData* mf_clone() const override { return nullptr; }
};

inline std::string errorText(const UQErrnoValue& value) {
    return utf8(UQErrno(value).mf_toString());
}

inline std::string catalogue(unsigned number) {
    return utf8(UQString(number).mf_getText());
}

} // namespace search_test
