#pragma once

// The order of the virtual operations is the binary contract between library
// and plugin. Microsoft's compiler puts the overloads of one name together at
// the place of the first, in reverse order of declaration; all other compilers
// keep the order of declaration. Overloads are therefore declared through
// these macros, whose arguments stand in the order of the contract.
#if defined(_MSC_VER)
#define HXSSO_OVERLOADS_2(first, second)                                                           \
    second;                                                                                        \
    first
#define HXSSO_OVERLOADS_4(first, second, third, fourth)                                            \
    fourth;                                                                                        \
    third;                                                                                         \
    second;                                                                                        \
    first
#define HXSSO_OVERLOADS_5(first, second, third, fourth, fifth)                                     \
    fifth;                                                                                         \
    fourth;                                                                                        \
    third;                                                                                         \
    second;                                                                                        \
    first
#else
#define HXSSO_OVERLOADS_2(first, second)                                                           \
    first;                                                                                         \
    second
#define HXSSO_OVERLOADS_4(first, second, third, fourth)                                            \
    first;                                                                                         \
    second;                                                                                        \
    third;                                                                                         \
    fourth
#define HXSSO_OVERLOADS_5(first, second, third, fourth, fifth)                                     \
    first;                                                                                         \
    second;                                                                                        \
    third;                                                                                         \
    fourth;                                                                                        \
    fifth
#endif
