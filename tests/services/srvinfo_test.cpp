// SRVINFO.DLL, loaded as the program loads it: clearing puts every set-up value of the remote
// report service back to its initial value (creating a key that has gone) and touches nothing
// else, so that the service asks for a key floppy again.
#include <string>

#include "seeded_store.h"
#include "vntinit_table.h"

namespace svctest {
namespace {

TEST_F(SeededStoreTest, SrvinfoClearsEverySetUpValueAndNothingElse) {
    SetDword(kServiceKey, "InstVantrelKeyFD", 1);
    SetDword(kServiceKey, "KEYFDTYPE", 2);
    SetDword(kServiceKey, "MethodType", 3);
    SetText(kSettingKey, "USERCODE", "C0012345");
    SetText(kSettingKey, "TOKUINMA", "Example Co");
    SetDword(kSettingKey, "KAISHAKBN", 0);
    SetText(kHttpsKey, "HTTPD1URL", "https://centre.example.com/report");
    SetDword(kSettingKey, "VntSuppressInterval", 30);
    ASSERT_EQ(RegDeleteKey(HKEY_LOCAL_MACHINE, kHeartBeatKey.c_str()), ERROR_SUCCESS);

    ASSERT_NO_FATAL_FAILURE(ClearServiceSetUp());

    int rows = 0;
    for (const VntInitRow* row = kVntInitRows; row->key[0] != '\0'; ++row, ++rows)
        EXPECT_EQ(Stored(row->key, row->name), row->value) << row->key << "\\" << row->name;
    EXPECT_EQ(rows, kVntInitRowCount);
    // Values the set-up does not hold stay.
    EXPECT_EQ(Stored(kSettingKey, "VntSuppressInterval"), "30");
    EXPECT_EQ(Stored(kServiceKey + "\\SETUP", "Installed"), "1");
}

}  // namespace
}  // namespace svctest
