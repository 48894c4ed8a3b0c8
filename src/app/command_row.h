/*
 * app/command_row.h - rows of a command table that the compiler checks.
 *
 * The dispatcher converts a command's words by its argument template ("d"
 * an int, "f" a float, "s" a string) and calls the function through the
 * type the template names.  A row whose template does not match its
 * function's real parameters would be called through the wrong type, and
 * nothing at run time could tell.  COMMAND_ROW derives the template from
 * the function's type and stops the build when the row says otherwise, so
 * the call the dispatcher makes is always the function's own type.
 */
#ifndef VESK_APP_COMMAND_ROW_H
#define VESK_APP_COMMAND_ROW_H

#include "vesk.h"

#include <type_traits>

namespace command_row {

template <typename T> struct Letter {
    static constexpr char value = '?';
};
template <> struct Letter<int> {
    static constexpr char value = 'd';
};
template <> struct Letter<float> {
    static constexpr char value = 'f';
};
template <> struct Letter<char *> {
    static constexpr char value = 's';
};

template <typename F> struct Signature;
template <typename R, typename... A> struct Signature<R (*)(A...)> {
    /* The dispatcher calls every command as returning int. */
    static constexpr bool returns_int = std::is_same<R, int>::value;
    static constexpr int count = (int)sizeof...(A);
    static constexpr char letters[sizeof...(A) + 1] = {Letter<A>::value..., '\0'};
};

/* The row's template against the letters of the function's parameters: a
 * function without parameters has no template (null) or an empty one. */
constexpr bool same_letters(const char *row, const char *real)
{
    if (!row) return *real == '\0';
    for (; *row && *real; row++, real++) {
        if (*row != *real) return false;
    }
    return *row == *real;
}

template <typename F> constexpr bool matches(int numargs, const char *template_)
{
    return Signature<F>::returns_int && Signature<F>::count == numargs &&
           same_letters(template_, Signature<F>::letters);
}

} // namespace command_row

/* A table row { name, function, numargs, template, usage, description }
 * whose template is checked against the function's type. */
#define COMMAND_ROW(name, function, numargs, template_, usage, description)                                       \
    {                                                                                                            \
        name,                                                                                                    \
            ((void)[] {                                                                                          \
                static_assert(command_row::matches<decltype(&(function))>(numargs, template_),                   \
                              "the template of command " name " does not match its function");                  \
            },                                                                                                   \
             reinterpret_cast<vk_command_function>(&(function))),                                                \
            numargs, template_, usage, description                                                               \
    }

#endif
