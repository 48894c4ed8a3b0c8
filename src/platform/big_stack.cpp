/*
 * platform/big_stack.cpp - see big_stack.h.
 */
#include "platform/big_stack.h"

#include <pthread.h>

namespace {

struct MainCall {
    int (*function)(int, char **);
    int argc;
    char **argv;
    int result;
};

void *run_main(void *data)
{
    MainCall *call = (MainCall *)data;
    call->result = call->function(call->argc, call->argv);
    return nullptr;
}

} // namespace

int run_on_big_stack(int (*main_function)(int, char **), int argc, char **argv)
{
    MainCall call = {main_function, argc, argv, 0};
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0) return main_function(argc, argv);
    pthread_t thread;
    int made = pthread_attr_setstacksize(&attributes, (size_t)BIG_STACK_BYTES) == 0 &&
               pthread_create(&thread, &attributes, run_main, &call) == 0;
    pthread_attr_destroy(&attributes);
    if (!made) return main_function(argc, argv);
    pthread_join(thread, nullptr);
    return call.result;
}
