// Fuzz target: the REGEDIT4 parser. A file that parses and holds only keys and values (what an
// export carries) must be written by writeRegFile and parse back to the same blocks.
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "regfile.h"

namespace {

// The key blocks of a parsed file; false when it deletes something, which an export never does.
bool ToBlocks(const std::vector<zolreg::Operation>& ops, std::vector<zolreg::KeyBlock>* blocks) {
    for (const zolreg::Operation& op : ops) {
        switch (op.kind) {
            case zolreg::OpKind::CreateKey:
                blocks->push_back({op.key, {}});
                break;
            case zolreg::OpKind::SetValue:
                // The parser refuses a value before the first key line.
                if (blocks->empty() || blocks->back().key != op.key)
                    __builtin_trap();
                blocks->back().values.push_back(op.value);
                break;
            case zolreg::OpKind::DeleteKey:
            case zolreg::OpKind::DeleteValue:
                return false;
        }
    }
    return true;
}

bool SameBlocks(const std::vector<zolreg::KeyBlock>& a, const std::vector<zolreg::KeyBlock>& b) {
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (a[i].key != b[i].key || a[i].values != b[i].values)
            return false;
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const zolreg::ParseResult parsed = zolreg::parseRegFile(text);
    if (parsed.error) {
        // A refused file is refused whole, with the line that is at fault.
        if (!parsed.ops.empty() || parsed.error->line < 1 || parsed.error->message.empty())
            __builtin_trap();
        return 0;
    }
    std::vector<zolreg::KeyBlock> blocks;
    if (!ToBlocks(parsed.ops, &blocks))
        return 0;

    std::string written;
    try {
        written = zolreg::writeRegFile(blocks);
    } catch (const std::invalid_argument&) {
        return 0;  // a name with a line break, which REGEDIT4 cannot carry
    }
    const zolreg::ParseResult again = zolreg::parseRegFile(written);
    std::vector<zolreg::KeyBlock> blocksAgain;
    if (again.error || !ToBlocks(again.ops, &blocksAgain) || !SameBlocks(blocks, blocksAgain))
        __builtin_trap();
    return 0;
}
