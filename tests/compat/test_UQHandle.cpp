// The owned-handle template, its view and the scope-exit helper, on both targets; the Win32 typedefs on
// the windows target.
#include "compat/UQHandle.h"

#include <gtest/gtest.h>

#if defined(_WIN32)
#include <unknwn.h>
#endif

#include <cstdio>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

// A handle kind whose closes are counted: ints, -1 absent.
std::vector<int> g_anClosed;

struct CountedTraits {
    typedef int Type;
    static Type mf_absent() noexcept { return -1; }
    static void mf_close(Type _nHandle) noexcept { g_anClosed.push_back(_nHandle); }
};

typedef UQHandle<CountedTraits> CountedHandle;

class UQHandleTest : public ::testing::Test {
protected:
    void SetUp() override { g_anClosed.clear(); }
};

} // namespace

static_assert(!std::is_copy_constructible<CountedHandle>::value, "an owner is not copied");
static_assert(!std::is_copy_assignable<CountedHandle>::value, "an owner is not copied");
static_assert(std::is_nothrow_move_constructible<CountedHandle>::value, "an owner moves");
static_assert(std::is_nothrow_move_assignable<CountedHandle>::value, "an owner moves");

TEST_F(UQHandleTest, ADefaultOwnerHoldsTheAbsentValueAndClosesNothing) {
    {
        CountedHandle handle;
        EXPECT_EQ(handle.mf_get(), -1);
        EXPECT_FALSE(handle);
        EXPECT_EQ(handle.mf_isValid(), 0);
    }
    EXPECT_TRUE(g_anClosed.empty());
}

TEST_F(UQHandleTest, AnOwnerClosesItsHandleOnceWhenItGoes) {
    {
        CountedHandle handle(0);
        EXPECT_TRUE(handle);
        EXPECT_EQ(handle.mf_isValid(), 1);
        EXPECT_EQ(handle.mf_get(), 0);
    }
    EXPECT_EQ(g_anClosed, std::vector<int>{0});
}

TEST_F(UQHandleTest, ReleaseGivesTheHandleUpWithoutClosingIt) {
    {
        CountedHandle handle(7);
        EXPECT_EQ(handle.mf_release(), 7);
        EXPECT_FALSE(handle);
    }
    EXPECT_TRUE(g_anClosed.empty());
}

TEST_F(UQHandleTest, ResetClosesTheOldHandleAndKeepsTheNewOne) {
    CountedHandle handle(1);
    handle.mf_reset(2);
    EXPECT_EQ(g_anClosed, std::vector<int>{1});
    EXPECT_EQ(handle.mf_get(), 2);
    handle.mf_reset();
    EXPECT_EQ(g_anClosed, (std::vector<int>{1, 2}));
    EXPECT_FALSE(handle);
    handle.mf_reset();
    EXPECT_EQ(g_anClosed.size(), 2u);
}

TEST_F(UQHandleTest, MovingHandsTheHandleOnAndLeavesTheSourceEmpty) {
    CountedHandle source(3);
    CountedHandle target(std::move(source));
    EXPECT_FALSE(source); // NOLINT(bugprone-use-after-move): the moved-from state is the subject
    EXPECT_EQ(target.mf_get(), 3);
    CountedHandle other(4);
    other = std::move(target);
    EXPECT_EQ(g_anClosed, std::vector<int>{4});
    EXPECT_EQ(other.mf_get(), 3);
    EXPECT_FALSE(target); // NOLINT(bugprone-use-after-move): the moved-from state is the subject
}

TEST_F(UQHandleTest, MovingAnOwnerOntoItselfKeepsTheHandle) {
    CountedHandle handle(5);
    CountedHandle& alias = handle;
    handle = std::move(alias);
    EXPECT_EQ(handle.mf_get(), 5);
    EXPECT_TRUE(g_anClosed.empty());
}

TEST_F(UQHandleTest, PutClosesTheHandleHeldAndReceivesTheNextOne) {
    CountedHandle handle(8);
    int* pnPlace = handle.mf_put();
    EXPECT_EQ(g_anClosed, std::vector<int>{8});
    EXPECT_EQ(*pnPlace, -1);
    *pnPlace = 9;
    EXPECT_EQ(handle.mf_get(), 9);
}

TEST_F(UQHandleTest, AViewSeesTheOwnersHandleAndClosesNothing) {
    CountedHandle owner(6);
    {
        const UQHandleView<CountedTraits> view(owner);
        EXPECT_EQ(view.mf_get(), 6);
        EXPECT_TRUE(view);
        const UQHandleView<CountedTraits> none;
        EXPECT_FALSE(none);
        EXPECT_EQ(none.mf_isValid(), 0);
    }
    EXPECT_TRUE(g_anClosed.empty());
}

TEST_F(UQHandleTest, AStdFileIsClosedByItsOwner) {
    UQStdFile file(std::tmpfile());
    ASSERT_TRUE(file);
    EXPECT_EQ(std::fputs("x", file.mf_get()) >= 0, true);
    file.mf_reset();
    EXPECT_FALSE(file);
}

TEST_F(UQHandleTest, AnEventIsClosedByItsOwner) {
    UQEventHandle event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    ASSERT_TRUE(event);
    EXPECT_TRUE(SetEvent(event.mf_get()));
    EXPECT_EQ(WaitForSingleObject(event.mf_get(), 0), WAIT_OBJECT_0);
}

TEST(UQScopeExit, RunsOnceWhenTheScopeIsLeft) {
    int nRuns = 0;
    {
        const UQScopeExit guard([&]() noexcept { ++nRuns; });
        EXPECT_EQ(nRuns, 0);
    }
    EXPECT_EQ(nRuns, 1);
}

TEST(UQScopeExit, RunsWhenAnExceptionLeavesTheScope) {
    int nRuns = 0;
    try {
        const UQScopeExit guard([&]() noexcept { ++nRuns; });
        throw 1;
    } catch (int) {
    }
    EXPECT_EQ(nRuns, 1);
}

TEST(UQScopeExit, ADismissedGuardDoesNothing) {
    int nRuns = 0;
    {
        UQScopeExit guard([&]() noexcept { ++nRuns; });
        guard.mf_dismiss();
    }
    EXPECT_EQ(nRuns, 0);
}

#if defined(_WIN32)
TEST_F(UQHandleTest, AFileHandleTakesInvalidHandleValueAsAbsent) {
    UQFileHandle none;
    EXPECT_EQ(none.mf_get(), INVALID_HANDLE_VALUE);
    EXPECT_FALSE(none);
    wchar_t szDirectory[MAX_PATH];
    wchar_t szPath[MAX_PATH];
    ASSERT_NE(GetTempPathW(MAX_PATH, szDirectory), 0u);
    ASSERT_NE(GetTempFileNameW(szDirectory, L"kor", 0, szPath), 0u);
    {
        UQFileHandle file(
            CreateFileW(szPath, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
        ASSERT_TRUE(file);
    }
    // Closed: a second exclusive open succeeds.
    UQFileHandle again(
        CreateFileW(szPath, GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    EXPECT_TRUE(again);
    again.mf_reset();
    DeleteFileW(szPath);
}

TEST_F(UQHandleTest, GdiObjectsIconsAndImageListsAreDestroyedByTheirOwners) {
    LOGFONTW lf;
    ZeroMemory(&lf, sizeof lf);
    lf.lfHeight = 12;
    UQFont font(CreateFontIndirectW(&lf));
    ASSERT_TRUE(font);
    HFONT hFont = font.mf_get();
    font.mf_reset();
    EXPECT_EQ(GetObjectW(hFont, sizeof lf, &lf), 0);

    UQBrush brush(CreateSolidBrush(RGB(1, 2, 3)));
    EXPECT_TRUE(brush);

    UQIcon icon(static_cast<HICON>(CopyImage(LoadIconW(nullptr, IDI_APPLICATION), IMAGE_ICON, 0, 0, 0)));
    EXPECT_TRUE(icon);

    UQImageList list(ImageList_Create(16, 16, ILC_COLOR32, 0, 1));
    ASSERT_TRUE(list);
    EXPECT_EQ(ImageList_GetImageCount(list.mf_get()), 0);
}

TEST_F(UQHandleTest, ARegistryKeyIsReceivedThroughPutAndClosedByItsOwner) {
    UQRegistryKey key;
    ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, L"Software", 0, KEY_READ, key.mf_put()), ERROR_SUCCESS);
    EXPECT_TRUE(key);
    DWORD dwSubKeys = 0;
    EXPECT_EQ(RegQueryInfoKeyW(key.mf_get(), nullptr, nullptr, nullptr, &dwSubKeys, nullptr, nullptr, nullptr,
                               nullptr, nullptr, nullptr, nullptr),
              ERROR_SUCCESS);
}

namespace {

// A COM object of our own, counting its references.
struct CountedUnknown : IUnknown {
    ULONG nReferences = 1;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** _ppObject) override {
        *_ppObject = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++nReferences; }
    ULONG STDMETHODCALLTYPE Release() override { return --nReferences; }
};

} // namespace

TEST_F(UQHandleTest, AComPointerReleasesItsReference) {
    CountedUnknown object;
    {
        UQComPtr<IUnknown> pointer(&object);
        object.AddRef();
        EXPECT_EQ(object.nReferences, 2u);
    }
    EXPECT_EQ(object.nReferences, 1u);
}
#endif
