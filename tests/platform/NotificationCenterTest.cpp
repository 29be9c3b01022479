#include "platform/Foundation.h"
#include "tests/support/RecordingPlatform.h"

#include <gtest/gtest.h>

using namespace qoro;
using qoro::test::RecordingPlatform;

namespace
{

using Lines = std::vector<std::string>;

struct Listener : Object {
    Listener(std::string of_name, Lines& into) : name(std::move(of_name)), heard(into) {}

    void hear(const NSNotification& notification) { heard.push_back(name + " " + std::string(notification.name)); }
    void hear_reason(const NSNotification& notification)
    {
        heard.push_back(notification.userInfo["reason"].stringValue().text());
    }
    void remove_other()
    {
        heard.push_back(name);
        NSNotificationCenter::defaultCenter().removeObserver(other.get());
    }
    void drop_other()
    {
        heard.push_back(name);
        other.reset();
    }
    void add_other()
    {
        heard.push_back(name);
        NSNotificationCenter::defaultCenter().addObserver(action<&Listener::hear>(other.get(), "hear:"), "news");
    }
    void move_other_to_the_end()
    {
        heard.push_back(name);
        NSNotificationCenter::defaultCenter().removeObserver(other.get());
        NSNotificationCenter::defaultCenter().addObserver(action<&Listener::hear>(other.get(), "hear:"), "news");
    }
    void post_again()
    {
        heard.push_back(name);
        NSNotificationCenter::defaultCenter().deliver("more");
    }

    std::string name;
    Lines& heard;
    std::shared_ptr<Listener> other;
};

class Notifications : public testing::Test
{
protected:
    RecordingPlatform platform;
    NSNotificationCenter& center = NSNotificationCenter::defaultCenter();
    Lines heard;
    std::shared_ptr<Listener> first = std::make_shared<Listener>("first", heard);
    std::shared_ptr<Listener> second = std::make_shared<Listener>("second", heard);
    int poster = 0;
    int stranger = 0;
};

} // namespace

TEST_F(Notifications, AreDeliveredInsideThePostInTheOrderOfRegistration)
{
    center.addObserver(action<&Listener::hear>(second.get(), "hear:"), "news");
    center.addObserver(action<&Listener::hear>(first.get(), "hear:"), "news");
    center.addObserver(action<&Listener::hear>(first.get(), "hear:"), "weather");

    center.deliver("news");

    EXPECT_EQ(heard, (Lines{"second news", "first news"}));
}

TEST_F(Notifications, CarryTheirInformation)
{
    center.addObserver(action<&Listener::hear_reason>(first.get(), "hear:"), "news");

    center.deliver("news", nullptr, {{"reason", 2}});

    EXPECT_EQ(heard, Lines{"2"});
}

TEST_F(Notifications, OfOnePosterReachItsObserversAndThoseOfAnyPoster)
{
    center.addObserver(action<&Listener::hear>(first.get(), "hear:"), "news", &poster);
    center.addObserver(action<&Listener::hear>(second.get(), "hear:"), "news");

    center.deliver("news", &stranger);
    center.deliver("news", &poster);

    EXPECT_EQ(heard, (Lines{"second news", "first news", "second news"}));
}

TEST_F(Notifications, DoNotReachAnObserverRemovedDuringThePost)
{
    first->other = second;
    center.addObserver(action<&Listener::remove_other>(first.get(), "remove"), "news");
    center.addObserver(action<&Listener::hear>(second.get(), "hear:"), "news");

    center.deliver("news");

    EXPECT_EQ(heard, Lines{"first"});
}

TEST_F(Notifications, StillReachObserversAfterOneThatRemovesItself)
{
    first->other = first;
    center.addObserver(action<&Listener::remove_other>(first.get(), "remove"), "news");
    center.addObserver(action<&Listener::hear>(second.get(), "hear:"), "news");

    center.deliver("news");

    EXPECT_EQ(heard, (Lines{"first", "second news"}));
    first->other.reset();
}

TEST_F(Notifications, ReachAnObserverAddedDuringThePostFromTheNextOneOn)
{
    first->other = second;
    center.addObserver(action<&Listener::add_other>(first.get(), "add"), "news");

    center.deliver("news");
    EXPECT_EQ(heard, Lines{"first"});
    center.deliver("news");

    EXPECT_EQ(heard, (Lines{"first", "first", "second news"}));
}

TEST_F(Notifications, DoNotReachAnObserverRemovedAndAddedAgainDuringThePost)
{
    first->other = second;
    center.addObserver(action<&Listener::move_other_to_the_end>(first.get(), "move"), "news");
    center.addObserver(action<&Listener::hear>(second.get(), "hear:"), "news");

    center.deliver("news");

    EXPECT_EQ(heard, Lines{"first"});
}

TEST_F(Notifications, SkipDestroyedObservers)
{
    first->other = std::move(second);
    const Object* gone = first->other.get();
    center.addObserver(action<&Listener::drop_other>(first.get(), "drop"), "news");
    center.addObserver(action<&Listener::hear>(first->other.get(), "hear:"), "news");

    center.deliver("news");

    EXPECT_EQ(heard, Lines{"first"});
    EXPECT_EQ(center.count_of(gone), 0U);
}

TEST_F(Notifications, MayBePostedFromWithinAnother)
{
    center.addObserver(action<&Listener::post_again>(first.get(), "post"), "news");
    center.addObserver(action<&Listener::hear>(second.get(), "hear:"), "more");
    center.addObserver(action<&Listener::hear>(second.get(), "hear:"), "news");

    center.deliver("news");

    EXPECT_EQ(heard, (Lines{"first", "second more", "second news"}));
}

TEST_F(Notifications, ReachAnObserverOncePerRegistration)
{
    center.addObserver(action<&Listener::hear>(first.get(), "hear:"), "news");
    center.addObserver(action<&Listener::hear>(first.get(), "hear:"), "news");

    center.deliver("news");

    EXPECT_EQ(heard, (Lines{"first news", "first news"}));
    EXPECT_EQ(center.count_of(first.get()), 2U);
}

TEST_F(Notifications, StopForAPosterWhoseRegistrationWasRemoved)
{
    center.addObserver(action<&Listener::hear>(first.get(), "hear:"), "news", &poster);
    center.addObserver(action<&Listener::hear>(first.get(), "hear:"), "news", &stranger);

    center.removeObserver(first.get(), "news", &poster);
    center.deliver("news", &poster);
    center.deliver("news", &stranger);

    EXPECT_EQ(heard, Lines{"first news"});
}

TEST_F(Notifications, StopForANameRemovedForEveryPoster)
{
    center.addObserver(action<&Listener::hear>(first.get(), "hear:"), "news", &poster);
    center.addObserver(action<&Listener::hear>(first.get(), "hear:"), "news");
    center.addObserver(action<&Listener::hear>(first.get(), "hear:"), "weather");

    center.removeObserver(first.get(), "news", nullptr);
    center.deliver("news", &poster);
    center.deliver("weather");

    EXPECT_EQ(heard, Lines{"first weather"});
}

TEST_F(Notifications, PostedByTheControllerAreEmittedAsEvents)
{
    center.postNotificationName("willOpen");
    center.postNotificationName("result", nullptr, {{"Result", NSDictionary{{"success", true}}}});
    center.deliver("platform's own");

    EXPECT_EQ(platform.transcript,
              (Lines{"notification name=willOpen info=null", "notification name=result info=Result:success:1"}));
}
