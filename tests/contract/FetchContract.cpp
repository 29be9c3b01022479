#include "tests/contract/ContractPlatform.h"

namespace qoro::test
{

namespace
{
/// Seconds to wait for an unexpected further answer.
constexpr double Moment = 0.1;

struct Answers {
    std::vector<FetchAnswer> got;
    auto taker()
    {
        return [this](FetchAnswer answer) { got.push_back(std::move(answer)); };
    }
};
} // namespace

TEST_P(FetchContract, ASuccessfulFetchAnswersOnceAsAnEventOfItsOwn)
{
    const std::string address = world().address(Address::Found);
    Answers answers;
    platform().fetcher().fetch(address, FetchKind::Tracker, answers.taker());
    EXPECT_TRUE(answers.got.empty());

    ASSERT_TRUE(until([&] { return !answers.got.empty(); }));
    let_pass(Moment);

    ASSERT_EQ(answers.got.size(), 1U);
    EXPECT_TRUE(answers.got[0].ok);
    EXPECT_EQ(answers.got[0].error, "");
    EXPECT_EQ(answers.got[0].body, FoundBody);
    EXPECT_EQ(answers.got[0].final_address, address);
}

TEST_P(FetchContract, AMissingResourceFailsWithAReason)
{
    Answers answers;
    platform().fetcher().fetch(world().address(Address::NotFound), FetchKind::Tracker, answers.taker());
    EXPECT_TRUE(answers.got.empty());

    ASSERT_TRUE(until([&] { return !answers.got.empty(); }));
    let_pass(Moment);

    ASSERT_EQ(answers.got.size(), 1U);
    EXPECT_FALSE(answers.got[0].ok);
    EXPECT_NE(answers.got[0].error, "");
}

TEST_P(FetchContract, AnUnreachableServerFailsWithAReason)
{
    Answers answers;
    platform().fetcher().fetch(world().address(Address::NobodyThere), FetchKind::Tracker, answers.taker());
    EXPECT_TRUE(answers.got.empty());

    ASSERT_TRUE(until([&] { return !answers.got.empty(); }));
    let_pass(Moment);

    ASSERT_EQ(answers.got.size(), 1U);
    EXPECT_FALSE(answers.got[0].ok);
    EXPECT_NE(answers.got[0].error, "");
}

TEST_P(FetchContract, AWaitingFetchDelaysNoOther)
{
    Answers silent;
    Answers found;
    platform().fetcher().fetch(world().address(Address::Silent), FetchKind::Tracker, silent.taker());
    platform().fetcher().fetch(world().address(Address::Found), FetchKind::Tracker, found.taker());

    ASSERT_TRUE(until([&] { return !found.got.empty(); }));

    EXPECT_TRUE(found.got[0].ok);
    EXPECT_TRUE(silent.got.empty());
}

TEST_P(FetchContract, AFetchPendingWhenThePlatformIsDestroyedNeverAnswersAndReleasesItsTarget)
{
    const auto kept = std::make_shared<int>();
    int answers = 0;
    platform().fetcher().fetch(world().address(Address::Silent), FetchKind::Tracker,
                               [&, kept](const FetchAnswer&) { ++answers; });
    platform().fetcher().fetch(world().address(Address::Found), FetchKind::Tracker,
                               [&, kept](const FetchAnswer&) { ++answers; });

    end();

    EXPECT_EQ(answers, 0);
    EXPECT_EQ(kept.use_count(), 1);
}

TEST_P(FetchContract, ABlockingFetchHasTheSameOutcomes)
{
    Fetcher& fetcher = platform().fetcher();

    const FetchAnswer found = fetcher.fetch_now(world().address(Address::Found));
    EXPECT_TRUE(found.ok);
    EXPECT_EQ(found.body, FoundBody);
    const FetchAnswer missing = fetcher.fetch_now(world().address(Address::NotFound));
    EXPECT_FALSE(missing.ok);
    EXPECT_NE(missing.error, "");
    const FetchAnswer nobody = fetcher.fetch_now(world().address(Address::NobodyThere));
    EXPECT_FALSE(nobody.ok);
    EXPECT_NE(nobody.error, "");
}

} // namespace qoro::test
