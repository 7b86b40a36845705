// The function a trace line names, worked out at compile time from the compiler's full name of
// the current function (__PRETTY_FUNCTION__). __func__ names a lambda "operator()", which says
// nothing; this names the enclosing named function instead, without its namespaces, class,
// return type or parameters, so that "menu.cpp:EditParameter:123" reads the same from the
// function's own body and from any lambda inside it.
//
// Spellings handled (GCC 12 and clang 14 and later):
//   void {anonymous}::S::m() const::<lambda(int)>           GCC lambda        -> m
//   auto (anonymous namespace)::S::m()::(anonymous class)::operator()(int) const   clang  -> m
//   auto f()::(lambda at file.cpp:3:14)::operator()() const  newer clang       -> f
//   T {anonymous}::tf(T) [with T = int]                      GCC template      -> tf
//   bool S::operator<(const S&) const                        operators        -> operator<
//   void f()::Local::run()                                   local class      -> run
#pragma once

#include <cstddef>
#include <string_view>

namespace zolwin::tracename {

// A name short enough to live in the binary as a constant of the function that traces.
template <std::size_t N>
struct Name {
    char text[N]{};
    constexpr const char* c_str() const { return text; }
};

namespace detail {

constexpr bool startsWith(std::string_view s, std::string_view prefix) {
    return s.substr(0, prefix.size()) == prefix;
}

// Length of the operator symbol that follows "operator" at the start of s, for the symbols whose
// characters would otherwise count as brackets; 0 for every other symbol.
constexpr std::size_t operatorSymbolLength(std::string_view s) {
    constexpr std::string_view symbols[] = {"()", "[]", "<=>", "<<=", ">>=", "->*", "->",
                                            "<<", ">>", "<=",  ">=",  "<",   ">"};
    for (std::string_view sym : symbols) {
        if (startsWith(s, sym))
            return sym.size();
    }
    return 0;
}

constexpr bool isIdentifierChar(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

// Index just past "operator<symbol>" when s[i] starts the keyword "operator", else i.
constexpr std::size_t skipOperator(std::string_view s, std::size_t i) {
    constexpr std::string_view kw = "operator";
    if (!startsWith(s.substr(i), kw) || (i > 0 && isIdentifierChar(s[i - 1])))
        return i;
    const std::size_t after = i + kw.size();
    if (after < s.size() && isIdentifierChar(s[after]))
        return i;  // an identifier that merely begins with "operator"
    return after + operatorSymbolLength(s.substr(after));
}

struct Segment {
    std::string_view text;
    std::size_t params = std::string_view::npos;  // offset of the parameter list's '('
};

// Splits a full name at the scope separators "::" outside brackets. Returns the number of
// segments written to out (at most max).
constexpr std::size_t splitScopes(std::string_view s, Segment* out, std::size_t max) {
    std::size_t count = 0, start = 0, params = std::string_view::npos;
    int depth = 0;
    for (std::size_t i = 0; i < s.size();) {
        const std::size_t skipped = skipOperator(s, i);
        if (skipped != i) {
            i = skipped;
            continue;
        }
        const char c = s[i];
        if (c == '(' || c == '[' || c == '{' || c == '<') {
            if (c == '(' && depth == 0 && params == std::string_view::npos)
                params = i - start;
            ++depth;
        } else if (c == ')' || c == ']' || c == '}' || (c == '>' && (i == 0 || s[i - 1] != '-'))) {
            --depth;
        } else if (depth == 0 && c == ':' && i + 1 < s.size() && s[i + 1] == ':') {
            if (count < max)
                out[count++] = Segment{s.substr(start, i - start), params};
            i += 2;
            start = i;
            params = std::string_view::npos;
            continue;
        }
        ++i;
    }
    if (count < max)
        out[count++] = Segment{s.substr(start), params};
    return count;
}

// A scope that stands for a lambda's closure type.
constexpr bool isClosure(std::string_view seg) {
    return startsWith(seg, "<lambda") || startsWith(seg, "(anonymous class)") ||
           startsWith(seg, "(lambda at ") || startsWith(seg, "(unnamed class");
}

// The function name in a segment with a parameter list: no return type, no template arguments.
constexpr std::string_view functionName(const Segment& seg) {
    std::string_view head = seg.text.substr(0, seg.params);
    // The return type (first segment only) ends at the last blank outside brackets, unless the
    // blank belongs to a conversion operator ("operator bool").
    std::size_t start = 0;
    int depth = 0;
    for (std::size_t i = 0; i < head.size(); ++i) {
        const std::size_t skipped = skipOperator(head, i);
        if (skipped != i) {
            if (depth == 0)
                return head.substr(i);
            i = skipped - 1;
            continue;
        }
        const char c = head[i];
        if (c == '<' || c == '(' || c == '[' || c == '{')
            ++depth;
        else if (c == '>' || c == ')' || c == ']' || c == '}')
            --depth;
        else if (c == ' ' && depth == 0)
            start = i + 1;
    }
    head = head.substr(start);
    if (!head.empty() && head.back() == '>') {  // "tf<int>": the name without its arguments
        const std::size_t open = head.find('<');
        if (open != std::string_view::npos && open > 0)
            head = head.substr(0, open);
    }
    return head;
}

}  // namespace detail

// The enclosing named function of a full function name, or `fallback` when none is found.
constexpr std::string_view enclosingFunction(std::string_view pretty, std::string_view fallback) {
    constexpr std::size_t kMaxScopes = 64;
    detail::Segment segs[kMaxScopes]{};
    const std::size_t n = detail::splitScopes(pretty, segs, kMaxScopes);
    for (std::size_t i = n; i-- > 0;) {
        const detail::Segment& seg = segs[i];
        if (detail::isClosure(seg.text))
            continue;
        // clang: the closure's call operator follows its "(anonymous class)" scope.
        if (i > 0 && detail::isClosure(segs[i - 1].text) &&
            detail::startsWith(seg.text, "operator()")) {
            --i;
            continue;
        }
        if (seg.params != std::string_view::npos) {
            const std::string_view name = detail::functionName(seg);
            return name.empty() ? fallback : name;
        }
    }
    return fallback;
}

template <std::size_t N, std::size_t M>
constexpr Name<N> functionOf(const char (&pretty)[N], const char (&fallback)[M]) {
    static_assert(M <= N, "the short name is never longer than the full one");
    Name<N> out;
    const std::string_view name =
        enclosingFunction(std::string_view(pretty, N - 1), std::string_view(fallback, M - 1));
    for (std::size_t i = 0; i < name.size() && i + 1 < N; ++i)
        out.text[i] = name[i];
    return out;
}

}  // namespace zolwin::tracename
