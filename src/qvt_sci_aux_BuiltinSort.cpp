// Predefined functions that sort and search.
//
// The C library's qsort hands its comparison two elements and nothing else: what dqsort and oqsort compare by stands in
// a global while they run. Counts are cut to the arrays' lengths where these are known.

#include "qvt_sci_aux_Builtin.h"

#include <algorithm>
#include <cstdlib>

// The count of elements that both the script asks for and the arrays passed as the given arguments hold.
static int CountWithin(int count, std::initializer_list<int> arrays)
{
    for (const int index : arrays) {
        const size_t room = RoomOfArgument(index);
        if (count > 0 && size_t(count) > room) count = int(room);
    }
    return std::max(count, 0);
}

template <class T>
static int Compare(T a, T b)
{
    return (a > b) - (a < b);
}

template <class T>
static int CompareElements(const void* a, const void* b)
{
    return Compare(*static_cast<const T*>(a), *static_cast<const T*>(b));
}

template <class T>
static void qvt_sci_sort(const int* arraySize, T* array)
{
    const int n = CountWithin(*arraySize, {1});
    if (n > 1) std::qsort(array, size_t(n), sizeof(T), CompareElements<T>);
}

template <class T>
static int qvt_sci_search(const int* arraySize, const T* key, const T* array)
{
    int low = 0;
    int high = CountWithin(*arraySize, {2});
    while (low < high) {
        const int middle = int((int64_t(low) + high) / 2);
        const int order = Compare(array[middle], *key);
        if (order == 0 && array[middle] == *key) return middle;
        if (order < 0) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return -1;
}

static const double* sortedValues = nullptr;   // of the dqsort under way

static int CompareByValue(const void* i, const void* j)
{
    return Compare(sortedValues[*static_cast<const int*>(i)], sortedValues[*static_cast<const int*>(j)]);
}

static void SetIdentity(int* order, int n)
{
    for (int i = 0; i < n; ++i) order[i] = i;
}

static void qvt_sci_dqsort(const int* n, double* array, int* order)
{
    const int count = CountWithin(*n, {1, 2});
    SetIdentity(order, count);
    if (count < 2) return;
    sortedValues = array;
    std::qsort(order, size_t(count), sizeof(int), CompareByValue);
}

// The order stays the identity if there is no function that could compare.
static void qvt_sci_oqsort(const int* n, int* order, Symbol* const* compare)
{
    const int count = CountWithin(*n, {1});
    SetIdentity(order, count);
    SortByFunction(order, count, *compare);
}

std::span<const Builtin> SortBuiltins()
{
    static const Builtin rows[] = {
        // clang-format off
        {"// SORTING FUNCTIONS",                                                  nullptr,                                         nullptr                     },
        {"",                                                                      nullptr,                                         nullptr                     },
        {"void int_sort(int arraySize, int array[]);",                            "smallest first",                                Native(qvt_sci_sort<int>)   },
        {"void double_sort(int arraySize, double array[]);",                      "smallest first",                                Native(qvt_sci_sort<double>)},
        {"int int_search(int arraySize, int key, int array[]);",                  "index of key in a sorted array, -1: none",
         Native(qvt_sci_search<int>)                                                                                                                           },
        {"int double_search(int arraySize, double key, double array[]);",         "index of key in a sorted array, -1: none",
         Native(qvt_sci_search<double>)                                                                                                                        },
        {"void dqsort(int n, double array[], int order[]);",
         "array[order[0]], array[order[1]], ... are sorted; array is unchanged",                                                   Native(qvt_sci_dqsort)      },
        {"void oqsort(int n, int order[], FUNC *compare);",                       "sorts 0 ... n-1 into order by a function like",
         Native(qvt_sci_oqsort)                                                                                                                                },
        {"//    int comp(int i, int j)",                                          "below 0: i comes first, 0: equal, above 0: j",  nullptr                     },
        {"// These two must not be called by a function that one of them calls.", nullptr,                                         nullptr                     },
        {"",                                                                      nullptr,                                         nullptr                     },
        // clang-format on
    };
    return rows;
}
