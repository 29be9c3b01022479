#include "platform/UIKit.h"
#include "tests/support/RecordingPlatform.h"
#include "tests/support/Views.h"

#include <gtest/gtest.h>

using namespace qoro;
using qoro::test::RecordingPlatform;

namespace
{

using Lines = std::vector<std::string>;

struct Screen : UIViewController {
    void populateView() override
    {
        steps.push_back("populate");
        view().addSubview(inner);
    }
    void viewDidLoad() override { steps.push_back(inner.superview() == view() ? "load" : "load too early"); }

    UIView inner = UIView::create();
    Lines steps;
};

struct Controllers : testing::Test {
    RecordingPlatform platform;
    std::shared_ptr<Screen> host = std::make_shared<Screen>();
    std::shared_ptr<Screen> sheet = std::make_shared<Screen>();
};

} // namespace

TEST_F(Controllers, HaveNoViewUntilItIsLoaded)
{
    EXPECT_FALSE(host->view());

    host->loadView();

    EXPECT_EQ(host->view().frame(), (CGRect{0, 0, 375, 812}));
}

TEST_F(Controllers, LoadTheirViewOnce)
{
    host->loadView();
    host->loadView();

    EXPECT_EQ(host->steps, (Lines{"populate", "load"}));
}

TEST_F(Controllers, WithoutAMainScreenLoadAnEmptyView)
{
    platform.device_facts.screen.reset();

    host->loadView();

    EXPECT_TRUE(host->view());
    EXPECT_EQ(host->view().frame(), (CGRect{0, 0, 0, 0}));
}

TEST_F(Controllers, RetainPresentedControllersUntilTheyAreDismissed)
{
    const std::weak_ptr<Screen> presented = sheet;
    host->presentViewController(sheet, true, {});
    EXPECT_TRUE(sheet->isBeingPresented());
    EXPECT_FALSE(host->isBeingPresented());

    sheet.reset();
    EXPECT_FALSE(presented.expired());
    host->dismissViewController(true, {});

    EXPECT_TRUE(presented.expired());
}

TEST_F(Controllers, EndTheirOwnPresentation)
{
    host->presentViewController(sheet, true, {});

    sheet->dismissViewController(true, {});

    EXPECT_FALSE(sheet->isBeingPresented());
}

TEST_F(Controllers, WithoutOtherReferencesMayEndTheirOwnPresentation)
{
    const std::weak_ptr<Screen> presented = sheet;
    host->presentViewController(sheet, true, {});
    Screen* const bare = std::exchange(sheet, nullptr).get();

    bare->dismissViewController(true, {});

    EXPECT_TRUE(presented.expired());
}

TEST_F(Controllers, AreNoLongerPresentedByADestroyedController)
{
    host->presentViewController(sheet, true, {});

    host.reset();

    EXPECT_FALSE(sheet->isBeingPresented());
}

TEST_F(Controllers, CompleteAPresentationAsAnEventOfItsOwn)
{
    Lines done;
    host->presentViewController(sheet, true, [&] { done.push_back("presented"); });
    host->dismissViewController(true, [&] { done.push_back("dismissed"); });
    EXPECT_EQ(done, Lines{});

    platform.let_pass(0);

    EXPECT_EQ(done, (Lines{"presented", "dismissed"}));
}

TEST_F(Controllers, ReportNothing)
{
    host->presentViewController(sheet, true, {});
    sheet->dismissViewController(true, {});

    EXPECT_EQ(platform.transcript, Lines{});
}

TEST_F(Controllers, PresentTheirViewInTheWindowOfThePresenters)
{
    const UIWindow window = UIWindow::create({0, 0, 375, 812});
    host->loadView();
    window.addSubview(host->view());

    host->presentViewController(sheet, true, nullptr);
    EXPECT_TRUE(is_on_top(sheet->view()));
    EXPECT_EQ(sheet->view().superview(), window);

    host->dismissViewController(true, nullptr);
    EXPECT_FALSE(sheet->view().superview());
}
