// The function a trace line names: the full names GCC and clang give the current function, and
// what is left of them. Both compilers' spellings are checked whichever compiler builds this.
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "zolwin.h"

namespace {

using zolwin::tracename::enclosingFunction;

struct Case {
    const char* pretty;
    const char* name;
};

constexpr Case kCases[] = {
    // Plain functions, with and without return types, namespaces and C linkage.
    {"int main()", "main"},
    {"LONG RegOpenKeyEx(HKEY, LPCSTR, DWORD, REGSAM, PHKEY)", "RegOpenKeyEx"},
    {"void a::b::f(const char*, std::function<void()>)", "f"},
    {"void a::b::f(const char *, std::function<void ()>)", "f"},
    {"static int {anonymous}::S::s()", "s"},
    {"static int (anonymous namespace)::S::s()", "s"},
    {"{anonymous}::S::~S()", "~S"},
    {"virtual void {anonymous}::T_Test::TestBody()", "TestBody"},
    // Lambdas: GCC names the closure "<lambda(...)>", clang "(anonymous class)::operator()" or,
    // from clang 16, "(lambda at file:line:column)::operator()".
    {"{anonymous}::S::m() const::<lambda(int)>", "m"},
    {"auto (anonymous namespace)::S::m()::(anonymous class)::operator()(int) const", "m"},
    {"auto main()::(lambda at src/frame/main.cpp:12:5)::operator()() const", "main"},
    {"{anonymous}::tf<int>(int)::<lambda()>::<lambda()>", "tf"},
    {"auto (anonymous namespace)::tf(int)::(anonymous class)::operator()()::(anonymous "
     "class)::operator()() const",
     "tf"},
    {"a::b::f(const char*, std::function<void()>)::<lambda(auto:3)> [with auto:3 = int]", "f"},
    {"auto a::b::f(const char *, std::function<void ()>)::(anonymous class)::operator()(auto) "
     "const [auto:1 = int]",
     "f"},
    // Templates: arguments and the "[with ...]" tail are not part of the name.
    {"T {anonymous}::tf(T) [with T = int]", "tf"},
    {"T (anonymous namespace)::tf(T) [T = int]", "tf"},
    {"void a::b::Tmpl<T>::go(std::function<int(int)>) [with T = std::vector<int>*]", "go"},
    {"a::b::Tmpl<std::vector<int>*>::go(std::function<int(int)>)::<lambda()>", "go"},
    // Operators whose symbols look like brackets, and a functor's own call operator.
    {"bool {anonymous}::S::operator<(const {anonymous}::S&) const", "operator<"},
    {"bool S::operator->*(int)", "operator->*"},
    {"bool S::operator>>=(int)", "operator>>="},
    {"void {anonymous}::S::operator()() const", "operator()"},
    {"{anonymous}::S::operator bool() const", "operator bool"},
    // A member of a class local to a function is named by itself, not by the function.
    {"void a::b::f(const char*, std::function<void()>)::Local::run()", "run"},
    // Nothing that looks like a function: the caller's fallback.
    {"", "fallback"},
    {"{anonymous}::<lambda()>", "fallback"},
};

TEST(TraceName, EnclosingNamedFunctionOfEverySpelling) {
    for (const Case& c : kCases)
        EXPECT_EQ(enclosingFunction(c.pretty, "fallback"), c.name) << c.pretty;
}

// The names are worked out while compiling, as ZOL_TRACE needs them.
static_assert(enclosingFunction("auto main()::(anonymous class)::operator()() const", "x") ==
              "main");
static_assert(enclosingFunction("main()::<lambda()>", "x") == "main");

TEST(TraceName, ThisCompilersOwnSpellingInsideLambdas) {
    constexpr auto direct = zolwin::tracename::functionOf(__PRETTY_FUNCTION__, __func__);
    EXPECT_STREQ(direct.c_str(), "TestBody");
    auto inLambda = [] {
        constexpr auto name = zolwin::tracename::functionOf(__PRETTY_FUNCTION__, __func__);
        return std::string(name.c_str());
    };
    EXPECT_EQ(inLambda(), "TestBody");
}

}  // namespace
