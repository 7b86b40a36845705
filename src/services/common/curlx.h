// libcurl's handles owned by RAII, for the delivery libraries that go out over libcurl (mail and
// HTTPS): an easy handle, a header/recipient list, a parsed URL, a text libcurl allocated, and
// libcurl's process-wide state for the length of one report.
#pragma once

#include <curl/curl.h>

#include <memory>
#include <string>

namespace curlx {

struct EasyFree {
    void operator()(CURL* c) const { curl_easy_cleanup(c); }
};
struct ListFree {
    void operator()(curl_slist* l) const { curl_slist_free_all(l); }
};
struct UrlFree {
    void operator()(CURLU* u) const { curl_url_cleanup(u); }
};
struct TextFree {
    void operator()(char* t) const { curl_free(t); }
};
using Easy = std::unique_ptr<CURL, EasyFree>;
using List = std::unique_ptr<curl_slist, ListFree>;
using Url = std::unique_ptr<CURLU, UrlFree>;
using Text = std::unique_ptr<char, TextFree>;

// Adds line at the end of list; false, the list as it was, when there is no memory.
inline bool Append(List& list, const std::string& line) {
    curl_slist* more = curl_slist_append(list.get(), line.c_str());
    if (more == nullptr)
        return false;
    static_cast<void>(list.release());  // more is the same list, one line longer
    list.reset(more);
    return true;
}

// libcurl's process-wide state (reference-counted by libcurl).
class Global {
  public:
    Global() : ok_(curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK) {}
    ~Global() {
        if (ok_)
            curl_global_cleanup();
    }
    Global(const Global&) = delete;
    Global& operator=(const Global&) = delete;
    bool ok() const { return ok_; }

  private:
    bool ok_;
};

}  // namespace curlx
