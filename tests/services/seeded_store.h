// Fixture of the remote report service's library tests: the services fixture with its store
// seeded from the product root's default.reg (as "zolreg init" seeds a new installation), and
// readers of single values through the program's own reader, RegReadEx.
#pragma once

#include <string>

#include "regpaths.h"
#include "services_test_util.h"

namespace svctest {

inline const std::string kServiceKey = ZOL_KEY_VNTSERVICE;
inline const std::string kSettingKey = kServiceKey + "\\SETTING";
inline const std::string kHeartBeatKey = kServiceKey + "\\HeartBeat";
inline const std::string kHttpsKey = ZOL_KEY_HTTPS_SETTING;

class SeededStoreTest : public ServicesTest {
  protected:
    void SetUp() override {
        ServicesTest::SetUp();
        const zoltest::RunResult r =
            zoltest::run({root().bin("zolreg").string(), "import",
                          (root().path() / "data" / "default.reg").string()},
                         root().env());
        ASSERT_EQ(r.status, 0) << r.err;
    }

    // A stored REG_DWORD as decimal text, a REG_SZ as its text, or "<missing>".
    static std::string Stored(const std::string& key, const char* name) {
        DWORD type = 0;
        BYTE data[1024];
        DWORD size = sizeof data;
        if (!RegReadEx(HKEY_LOCAL_MACHINE, key.c_str(), name, &type, &size, data))
            return "<missing>";
        if (type == REG_DWORD)
            return std::to_string(*reinterpret_cast<const DWORD*>(data));
        return std::string(reinterpret_cast<const char*>(data));
    }
};

}  // namespace svctest
