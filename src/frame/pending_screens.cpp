// Settings screens that this version does not offer yet: each tells the user so in a box titled
// with its menu label. Each is its own function so that it goes away when its screen arrives.
#include <string>

#include "baseset/baseset.h"
#include "frame/menu.h"
#include "frame/msgfile.h"
#include "frame/screens.h"
#include "ui/toolkit.h"

namespace {

void ScreenNotBuilt(const char* menuLabelId) {
    ZOL_TRACE(TRACE_LEVEL_TRACE, "> [IN] %s", menuLabelId);
    const std::string title = MessageText(menuLabelId);
    msgWindow(title.c_str(), " ok ", CPGetText("SCREEN_NOT_BUILT_ID", ReadString, ZOL_RcFileBuf));
    ZOL_TRACE(TRACE_LEVEL_TRACE, "<");
}

}  // namespace

void VantrelMachineSetting(HMODULE /*rptsetLib*/) {
    ScreenNotBuilt("VANTREL_MACHINE_ID");
}

void VantrelVendorSetting(HMODULE /*rptsetLib*/) {
    ScreenNotBuilt("VANTREL_SELLER_ID");
}

void VantrelOptionSetting(HMODULE /*rptsetLib*/) {
    ScreenNotBuilt("VANTREL_OPTION_ID");
}
