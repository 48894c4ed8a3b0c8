/*
 * app/dispatcher.cpp - do_command: finds a command by name (commands added
 * at run time first, then the built-in table), converts its words by the
 * argument template, and calls its function inside the fault guard.  The
 * textual answer of a command is left in the result buffer.
 */
#include "app/commands.h"
#include "app/plugins.h"
#include "edit/model_check.h"
#include "app/shared_state.h"
#include "view/redraw.h"
#include "core/internal.h"
#include "platform/signal_guard.h"

#include <cstdarg>
#include <cstdlib>
#include <cstring>

enum { MAX_COMMAND_WORDS = 20, MESSAGE_BUFFER = 2048 };

List *added_commands = nullptr;
const char *command_running_name = "";

/* The result text, with its length and capacity so that long answers
 * (a vertex list of a large object) are built in linear time. */
static char *command_result = nullptr;
static size_t result_length = 0;
static size_t result_capacity = 0;

char *command_result_get(void) { return command_result; }

static void result_clear(void)
{
    myfree(command_result);
    command_result = nullptr;
    result_length = result_capacity = 0;
}

/* True when text points into the result buffer itself, as when a command
 * passes the current result back in. */
static bool result_holds(const char *text)
{
    uintptr_t p = (uintptr_t)text, start = (uintptr_t)command_result;
    return text && command_result && p >= start && p <= start + result_length;
}

char *command_result_set(const char *text)
{
    /* Text from the buffer being freed is copied out first. */
    char *copy = result_holds(text) ? mystrdup(text) : nullptr;
    result_clear();
    command_result_append_string(copy ? copy : text);
    myfree(copy);
    return command_result;
}

void command_result_append_string(const char *text)
{
    if (!text) return;
    if (result_holds(text)) {
        /* Growing would free the text, and appending in place would
         * copy between overlapping ranges. */
        char *copy = mystrdup(text);
        if (copy) command_result_append_string(copy);
        myfree(copy);
        return;
    }
    size_t add = strlen(text);
    if (result_length + add + 1 > result_capacity) {
        size_t capacity = result_capacity ? result_capacity : 64;
        while (capacity < result_length + add + 1) capacity *= 2;
        if (capacity > 0xFFFFFFFFu) return;
        char *grown = (char *)myalloc((unsigned int)capacity);
        if (!grown) return;
        if (result_length) memcpy(grown, command_result, result_length);
        myfree(command_result);
        command_result = grown;
        result_capacity = capacity;
    }
    memcpy(command_result + result_length, text, add + 1);
    result_length += add;
}

void command_result_append_int(int value)
{
    command_result_appendf("%d", value);
}

void command_result_appendf(const char *format, ...)
{
    char buffer[MESSAGE_BUFFER];
    va_list ap;
    va_start(ap, format);
    vsnprintf(buffer, sizeof buffer, format, ap);
    va_end(ap);
    command_result_append_string(buffer);
}

/* ---- the registry ---- */

static Command *new_command_record(const char *name, vk_command_function function, int numargs,
                                   const char *template_, const char *usage, const char *description)
{
    Command *c = (Command *)myalloc(sizeof(Command));
    c->name = mystrdup(name);
    c->function = function;
    c->numargs = numargs;
    c->template_ = mystrdup(template_);
    c->usage = mystrdup(usage);
    c->description = mystrdup(description);
    return c;
}

void vk_add_command(const char *name, vk_command_function function)
{
    if (!name || !function) {
        console_printf("vk_add_command: a command needs a name and a function\n");
        return;
    }
    plugin_check_command_name(name);
    list_add_item(&added_commands, new_command_record(name, function, 0, nullptr, nullptr, "user command"));
}

List *vk_add_command_full(const char *name, vk_command_function function, int numargs,
                          const char *template_, const char *usage, const char *description)
{
    if (!name || !function) {
        console_printf("vk_add_command_full: a command needs a name and a function\n");
        return nullptr;
    }
    plugin_check_command_name(name);
    return list_add_item(&added_commands,
                         new_command_record(name, function, numargs, template_, usage, description));
}

Command *find_command(const char *name)
{
    for (List *l = added_commands; l; l = l->next) {
        Command *c = (Command *)l->item;
        if (strcmp(c->name, name) == 0) return c;
    }
    for (int i = 0; i < num_builtin_commands; i++) {
        if (strcmp(builtin_commands[i].name, name) == 0) return &builtin_commands[i];
    }
    return nullptr;
}

int vk_replace_command_function(const char *name, vk_command_function function)
{
    Command *c = find_command(name);
    if (!c) return 0;
    c->function = function;
    return 1;
}

/* ---- running a command ---- */

/* One argument converted by its template letter. */
union ArgSlot {
    int d;
    float f;
    char *s;
};

struct CommandCall {
    Command *command;
    ArgSlot args[MAX_COMMAND_WORDS];
};

/* The standard decimal conversion: the leading integer, 0 when there is
 * none; kept inside the int range. */
static int word_to_int(const char *word)
{
    long long v = strtoll(word, nullptr, 10);
    if (v > 2147483647LL) return 2147483647;
    if (v < -2147483647LL - 1) return -2147483647 - 1;
    return (int)v;
}

/* Converts the words by the template; returns 0 on an unknown letter. */
static int convert_arguments(Command *c, char **words, ArgSlot *args)
{
    for (int i = 0; i < c->numargs; i++) {
        switch (c->template_ ? c->template_[i] : '\0') {
        case 'd': args[i].d = word_to_int(words[i]); break;
        case 'f': args[i].f = (float)strtod(words[i], nullptr); break;
        case 's': args[i].s = words[i]; break;
        /* An optional last string: null when the word was left out. */
        case 'o': args[i].s = words[i]; break;
        default:
            console_printf("error - internal command - unknown parameter type - tell Orlo\n");
            return 0;
        }
    }
    return 1;
}

template <typename F> static F as(vk_command_function f) { return reinterpret_cast<F>(f); }

/* Calls the function with the arguments its template names. */
static void call_command(void *context)
{
    CommandCall *call = (CommandCall *)context;
    Command *c = call->command;
    ArgSlot *a = call->args;
    const char *t = c->template_ ? c->template_ : "";
    vk_command_function f = c->function;
    if (!*t) as<int (*)(void)>(f)();
    else if (!strcmp(t, "d")) as<int (*)(int)>(f)(a[0].d);
    else if (!strcmp(t, "f")) as<int (*)(float)>(f)(a[0].f);
    else if (!strcmp(t, "s")) as<int (*)(char *)>(f)(a[0].s);
    else if (!strcmp(t, "sd")) as<int (*)(char *, int)>(f)(a[0].s, a[1].d);
    else if (!strcmp(t, "so")) as<int (*)(char *, char *)>(f)(a[0].s, a[1].s);
    else if (!strcmp(t, "ff")) as<int (*)(float, float)>(f)(a[0].f, a[1].f);
    else if (!strcmp(t, "fff")) as<int (*)(float, float, float)>(f)(a[0].f, a[1].f, a[2].f);
    else if (!strcmp(t, "ffffff"))
        as<int (*)(float, float, float, float, float, float)>(f)(a[0].f, a[1].f, a[2].f, a[3].f, a[4].f, a[5].f);
    else if (!strcmp(t, "dffffffffffffff"))
        as<int (*)(int, float, float, float, float, float, float, float, float, float, float, float,
                   float, float, float)>(f)(a[0].d, a[1].f, a[2].f, a[3].f, a[4].f, a[5].f, a[6].f,
                                            a[7].f, a[8].f, a[9].f, a[10].f, a[11].f, a[12].f,
                                            a[13].f, a[14].f);
    else {
        console_printf("%cunknown arg template %s for command %s\n", 7, t, c->name);
        console_printf("templates are: d, f, s, sd, ff, fff, ffffff, dffffffffffffff\n where d=int, "
                       "f=float, s=string (use NULL for no template)\n");
    }
}

/* A template ending in "o" lets the last word be left out. */
static bool has_optional_last(const Command *c)
{
    size_t n = c->template_ ? strlen(c->template_) : 0;
    return c->numargs > 0 && n == (size_t)c->numargs && c->template_[n - 1] == 'o';
}

/* Checks and converts the words, then calls the command.  Returns 0 when
 * the words did not fit the command. */
static int prepare_call(Command *c, int argc, char **argv, CommandCall *call)
{
    debugf("executing command '%s', numargs %d params %s usage %s desc \"%s\"\n", c->name,
           c->numargs, c->template_ ? c->template_ : "(null)", c->usage ? c->usage : "(null)",
           c->description ? c->description : "(null)");
    if (argc - 1 != c->numargs && !(argc == c->numargs && has_optional_last(c))) {
        char message[MESSAGE_BUFFER];
        snprintf(message, sizeof message,
                 "incorrect number of args for %s (should be %d, got %d) - usage:\n    %s", c->name,
                 c->numargs, argc - 1, c->usage ? c->usage : "(null)");
        console_printf("%s\n", message);
        command_result_set(message);
        return 0;
    }
    if (c->numargs < 0 || c->numargs > MAX_COMMAND_WORDS - 1) return 0;
    /* A left-out optional word reads as null (the word list ends with
     * one, as argv does). */
    char *words[MAX_COMMAND_WORDS] = {};
    for (int i = 1; i < argc; i++) words[i - 1] = argv[i];
    if (!convert_arguments(c, words, call->args)) return 0;
    call->command = c;
    init_ui();
    return 1;
}

static void debug_print_words(int argc, char **argv)
{
    if (!debug_flag) return;
    debugf("received command : ");
    for (int i = 0; i < argc; i++) debugf("\t'%s' ", argv[i]);
    debugf("\n");
}

/* In checking builds every command must leave the model whole; one that
 * doesn't stops the program at once, naming itself and the damage. */
static void check_model_after(const char *name)
{
#ifdef VESK_CHECKS
    /* A command that changes the model or the selection asks for a
     * redraw or marks the model changed; queries do neither, and are not
     * checked, so that walking a big model by queries stays linear. */
    static unsigned long checked_generation = (unsigned long)-1;
    static int checked_unsaved = -1, checked_undo = -1;
    if (model_generation == checked_generation && unsaved_changes == checked_unsaved && undo_count == checked_undo)
        return;
    checked_generation = model_generation;
    checked_unsaved = unsaved_changes;
    checked_undo = undo_count;
    char report[2048];
    if (model_check(report, sizeof report) == 0) return;
    fprintf(stderr, "VESK: the command '%s' left the model inconsistent - tell Orlo:\n%s", name, report);
    fflush(stderr);
    abort();
#else
    (void)name;
#endif
}

int do_command(int argc, char **argv)
{
    command_result_set(nullptr);
    if (argc <= 0) return 1;
    if (argc >= MAX_COMMAND_WORDS + 1) {
        console_printf("max number of command parameters exceeded\n");
        return 0;
    }
    debug_print_words(argc, argv);
    Command *c = find_command(argv[0]);
    if (!c) {
        console_printf("%ccommand %s not found!\n", 7, argv[0]);
        command_result_set("command not found");
        return 0;
    }
    CommandCall call{};
    if (!prepare_call(c, argc, argv, &call)) return 0;
    const char *outer_name = command_running_name;
    command_running_name = c->name;
    int fault = 0;
    int ran = run_guarded(call_command, &call, &fault);
    command_running_name = outer_name;
    if (!ran) {
        windows_message_dialog(
            "Exception occured whilst executing internal command '%s'\nException code %d\n\nPlease "
            "report this to Orlo.\nPlease report what you did before the error occured and\ndetails "
            "of any output in the console.",
            c->name, fault);
        return 0;
    }
    check_model_after(c->name);
    return 1;
}

int command_finish(int ok)
{
    command_result_set(ok ? "1" : "0");
    return ok;
}

int command_lacks_filename(const char *filename, const char *command)
{
    if (filename && *filename) return 0;
    display_message("%s: no file name given", command);
    return 1;
}

/* ---- stubs ---- */

int not_available_none(void)
{
    console_printf("command '%s' is not available yet\n", command_running_name);
    /* The user who chose it sees why nothing happened. */
    display_message("%s - not available in this version", command_running_name ? command_running_name : "command");
    return 0;
}
int not_available_d(int) { return not_available_none(); }
int not_available_f(float) { return not_available_none(); }
int not_available_s(char *) { return not_available_none(); }
int not_available_sd(char *, int) { return not_available_none(); }
int not_available_ff(float, float) { return not_available_none(); }
int not_available_fff(float, float, float) { return not_available_none(); }
int not_available_ffffff(float, float, float, float, float, float) { return not_available_none(); }

/* 1 when the function is one of the stand-ins above. */
static int is_stand_in(vk_command_function f)
{
    const vk_command_function stand_ins[] = {
        reinterpret_cast<vk_command_function>(&not_available_none),
        reinterpret_cast<vk_command_function>(&not_available_d),
        reinterpret_cast<vk_command_function>(&not_available_f),
        reinterpret_cast<vk_command_function>(&not_available_s),
        reinterpret_cast<vk_command_function>(&not_available_sd),
        reinterpret_cast<vk_command_function>(&not_available_ff),
        reinterpret_cast<vk_command_function>(&not_available_fff),
        reinterpret_cast<vk_command_function>(&not_available_ffffff),
    };
    for (vk_command_function s : stand_ins) {
        if (s == f) return 1;
    }
    return 0;
}

int command_available(char *name)
{
    Command *c = name ? find_command(name) : nullptr;
    command_result_set(c && c->function && !is_stand_in(c->function) ? "1" : "0");
    return 1;
}

int command_list(void)
{
    command_result_set("");
    for (List *l = added_commands; l; l = l->next) {
        Command *c = (Command *)l->item;
        command_result_appendf("%s %s %s\n", c->name, c->usage ? c->usage : "",
                               c->description ? c->description : "");
    }
    for (int i = 0; i < num_builtin_commands; i++) {
        Command *c = &builtin_commands[i];
        command_result_appendf("%s %s %s\n", c->name, c->usage ? c->usage : "",
                               c->description ? c->description : "");
    }
    return 1;
}
