// The progress event of korutil, as the progress dialogs read it.
#include "interfaces/korutil.h"

#include "support/LogCheck.h"

#include <cstdint>
#include <limits>

TEST(UQProgressEvent, CarriesEverythingTheDialogsRead) {
    const UQProgressEvent event(UQProgressEvent::ACTION_PROGRESS, L"Migrating C:\\data\\a.txt", 3, 10, 512,
                                2048);
    EXPECT_EQ(event.mf_getId(), UQEVENT_ID_PROGRESS);
    EXPECT_EQ(event.mf_getId(), 0x0040000000000000ull);
    EXPECT_EQ(event.mf_getAction(), 0u);
    EXPECT_EQ(event.mf_getText(), CString(L"Migrating C:\\data\\a.txt"));
    EXPECT_EQ(event.mf_getCurObjects(), 3);
    EXPECT_EQ(event.mf_getTotalObjects(), 10);
    EXPECT_EQ(event.mf_getCurData(), 512);
    EXPECT_EQ(event.mf_getTotalData(), 2048);
    EXPECT_EQ(event.mf_calcCurDataPercent(), 25u);
    EXPECT_EQ(event.mf_toString(),
              CString(L"ProgressEvent action=0 text='Migrating C:\\data\\a.txt' objects=3/10 data=512/2048"));
}

TEST(UQProgressEvent, ActionsHaveTheValuesOfTheDialogs) {
    EXPECT_EQ(UQProgressEvent::ACTION_PROGRESS, 0u);
    EXPECT_EQ(UQProgressEvent::ACTION_START, 1u);
    EXPECT_EQ(UQProgressEvent::ACTION_END, 2u);
    EXPECT_EQ(UQProgressEvent::ACTION_ENABLE_CANCEL, 3u);
    EXPECT_EQ(UQProgressEvent::ACTION_DISABLE_CANCEL, 4u);
    const UQProgressEvent end(UQProgressEvent::ACTION_END);
    EXPECT_EQ(end.mf_getAction(), 2u);
    EXPECT_EQ(end.mf_getText(), CString());
    EXPECT_EQ(end.mf_getCurObjects(), 0);
    EXPECT_EQ(end.mf_calcCurDataPercent(), 0u);
    EXPECT_EQ(UQProgressEvent(77).mf_getAction(), 77u); // unknown actions are carried as they are
}

TEST(UQProgressEvent, PercentOfTheCurrentData) {
    const auto percent = [](std::int64_t cur, std::int64_t total) {
        return UQProgressEvent(UQProgressEvent::ACTION_PROGRESS, CString(), 0, 0, cur, total)
            .mf_calcCurDataPercent();
    };
    EXPECT_EQ(percent(0, 100), 0u);
    EXPECT_EQ(percent(1, 3), 33u); // rounded down
    EXPECT_EQ(percent(2, 3), 66u);
    EXPECT_EQ(percent(99, 100), 99u);
    EXPECT_EQ(percent(100, 100), 100u);
    EXPECT_EQ(percent(150, 100), 100u); // never above 100
    EXPECT_EQ(percent(5, 0), 0u);       // total unknown
    EXPECT_EQ(percent(5, -1), 0u);
    EXPECT_EQ(percent(-5, 100), 0u);
    const std::int64_t big = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(percent(big / 2, big), 49u); // no overflow
    EXPECT_EQ(percent(big - 1, big), 99u);
    EXPECT_EQ(percent(big, big), 100u);
    EXPECT_EQ(percent(std::int64_t(1) << 40, std::int64_t(1) << 42), 25u);
}

TEST(UQProgressEvent, CopiesKeepEveryField) {
    const UQProgressEvent original(UQProgressEvent::ACTION_DISABLE_CANCEL, L"x", 1, 2, 3, 4);
    UQProgressEvent copy(UQProgressEvent::ACTION_END);
    copy = original;
    EXPECT_EQ(copy.mf_toString(), original.mf_toString());
    EXPECT_EQ(UQProgressEvent(original).mf_getTotalData(), 4);
}

namespace {

// What a progress dialog does: listen under the progress id and downcast.
class ProgressListener : public UQEventListener {
public:
    ProgressListener() : UQEventListener(UQEVENT_ID_PROGRESS) {}
    ~ProgressListener() override { mf_unregister(); }
    void mf_onEvent(const UQEvent& event) override {
        const UQProgressEvent* progress = dynamic_cast<const UQProgressEvent*>(&event);
        if (progress == nullptr) {
            ++nOther;
            return;
        }
        actions.push_back(progress->mf_getAction());
        percents.push_back(progress->mf_calcCurDataPercent());
    }
    std::vector<std::uint32_t> actions;
    std::vector<unsigned long> percents;
    int nOther = 0;
};

} // namespace

TEST(UQProgressEvent, ReachesProgressListenersAsAProgressEvent) {
    ProgressListener listener;
    EXPECT_EQ(UQProgressEvent(UQProgressEvent::ACTION_START).mf_publish(), 1);
    EXPECT_EQ(UQProgressEvent(UQProgressEvent::ACTION_PROGRESS, L"half", 1, 2, 50, 100).mf_publish(), 1);
    EXPECT_EQ(UQProgressEvent(UQProgressEvent::ACTION_END).mf_publish(), 1);
    EXPECT_EQ(UQEvent(UQEVENT_ID_PROGRESS).mf_publish(), 1); // a plain event of the id fails the downcast
    EXPECT_EQ(listener.actions, (std::vector<std::uint32_t>{1, 0, 2}));
    EXPECT_EQ(listener.percents, (std::vector<unsigned long>{0, 50, 0}));
    EXPECT_EQ(listener.nOther, 1);
}
