#include "interfaces/korbase.h"

#include "support/LogCheck.h"

TEST(UQCancelObject, StartsWithoutASwitch) {
    UQCancelObject worker;
    EXPECT_EQ(worker.mf_getCancelSwitch(), nullptr);
    worker.mf_cancel(); // nothing to trip, nothing happens
}

TEST(UQCancelObject, InstalledSwitchIsTrippedByCancel) {
    UQCancelSwitch cancel;
    UQCancelObject worker;
    worker.mf_installCancelSwitch(&cancel);
    EXPECT_EQ(worker.mf_getCancelSwitch(), &cancel);
    EXPECT_EQ(cancel.mf_isCancelled(), 0);
    worker.mf_cancel();
    EXPECT_EQ(cancel.mf_isCancelled(), 1);
}

TEST(UQCancelObject, InstallingNullIsAParameterError) {
    LogCheck log;
    UQCancelObject worker;
    EXPECT_EQ(thrownCategory([&] { worker.mf_installCancelSwitch(nullptr); }), "_E_::Parameter");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQCancelObject::mf_installCancelSwitch",
                                                  "Resetting cancel switch to NULL is not allowed"}}));
}

TEST(UQCancelObject, InstallingTheSameSwitchTwiceFailsTheSecondTime) {
    UQCancelSwitch cancel;
    UQCancelObject worker;
    worker.mf_installCancelSwitch(&cancel);
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { worker.mf_installCancelSwitch(&cancel); }), "_E_::AlreadyInitialized");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQCancelObject::mf_installCancelSwitch",
                                                  "Cancel switch is already set"}}));
    EXPECT_EQ(worker.mf_getCancelSwitch(), &cancel);
}

TEST(UQCancelObject, PropagatingWithoutASwitchIsAnInitializationError) {
    LogCheck log;
    UQCancelObject source, target;
    EXPECT_EQ(thrownCategory([&] { source.mf_implPropagateCancelSwitch(target, 1); }), "_E_::Initialization");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQCancelObject::mf_implPropagateCancelSwitch",
                                                  "No cancel switch to propagate"}}));
}

TEST(UQCancelObject, PropagatingOntoASwitchWithoutOverwriteFails) {
    UQCancelSwitch mine, theirs;
    UQCancelObject source, target;
    source.mf_installCancelSwitch(&mine);
    target.mf_installCancelSwitch(&theirs);
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { source.mf_implPropagateCancelSwitch(target, 0); }),
              "_E_::AlreadyInitialized");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQCancelObject::mf_implPropagateCancelSwitch",
                                                  "Target cancle switch is already initialized"}}));
    EXPECT_EQ(target.mf_getCancelSwitch(), &theirs);
}

TEST(UQCancelObject, PropagatingWithOverwriteReplacesTheTargetsSwitch) {
    UQCancelSwitch mine, theirs;
    UQCancelObject source, target;
    source.mf_installCancelSwitch(&mine);
    target.mf_installCancelSwitch(&theirs);
    source.mf_implPropagateCancelSwitch(target, 1);
    EXPECT_EQ(target.mf_getCancelSwitch(), &mine);
    target.mf_cancel(); // both now share one switch
    EXPECT_EQ(mine.mf_isCancelled(), 1);
    EXPECT_EQ(theirs.mf_isCancelled(), 0);
}

TEST(UQCancelObject, PropagatingToATargetWithoutSwitchSharesIt) {
    UQCancelSwitch mine;
    UQCancelObject source, target;
    source.mf_installCancelSwitch(&mine);
    source.mf_implPropagateCancelSwitch(target, 0);
    EXPECT_EQ(target.mf_getCancelSwitch(), &mine);
}
