// Fixture of the HTTPS, via-manager and dial-up delivery tests: a fresh seeded product root, its
// store written through store_, and the delivery entries called as the program calls them
// (library_fixture.h).
#pragma once

#include "library_fixture.h"
#include "regpaths.h"

namespace nettest {

using deliverytest::Outcome;

class NetDeliveryTest : public deliverytest::LibraryTest {
  protected:
    NetDeliveryTest() : LibraryTest("nettest") {}
};

}  // namespace nettest
