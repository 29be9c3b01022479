#include "tests/hostile/OwnNetwork.h"

#include <gtest/gtest.h>

#include <cstdlib>

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    setenv("QORO_NO_OWN_NETWORK", qoro::test::enter_own_network().c_str(), 1);
    return RUN_ALL_TESTS();
}
