// Every allocation failure of the foundation (heap, converters, block arrays) and of the
// containers (dynamic arrays, linked lists, string lists).
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "korvelbase/korvelbase.h"
#include "tests/alloc/fault_driver.hpp"

namespace kbtest {

long long& failurePointsTried() {
    static long long tried = 0;
    return tried;
}

namespace {

class ReportPoints : public ::testing::Environment {
public:
    void TearDown() override {
        std::printf("allocation failure points tried: %lld\n", failurePointsTried());
    }
};
const auto* const kReport = ::testing::AddGlobalTestEnvironment(new ReportPoints);

int memError() {
    int error = 0;
    int detail = 0;
    MEM_GetErreur(&error, &detail);
    return error;
}

std::vector<double> readDoubles(const void* array, int n) {
    const auto* values = static_cast<const double*>(array);
    return std::vector<double>(values, values + n);
}

}  // namespace

TEST(AllocationFailures, ConvertersReturnNull) {
    const Point3d points[3] = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
    tryEveryAllocationFailure([&](long long k) {
        Point2d* flat = nullptr;
        bool reached = false;
        {
            FailingAllocation failing(k);
            flat = ConvertArray32(points, 3);
            reached = failing.reached();
        }
        if (reached) {
            EXPECT_EQ(flat, nullptr);
        } else {
            EXPECT_EQ(flat[2].y, 8.0);
        }
        if (flat != nullptr) qmMem_free(flat);
        return reached;
    });
}

TEST(AllocationFailures, BlockArraysRaiseTheErrorAndKeepOrReleaseStorage) {
    // Creation: null storage and the error word.
    tryEveryAllocationFailure([](long long k) {
        void* array = nullptr;
        bool reached = false;
        {
            FailingAllocation failing(k);
            MEM_CreerTableau(&array, sizeof(double), 25);
            reached = failing.reached();
        }
        EXPECT_EQ(memError(), reached ? ERR_FAILURE : 0);
        EXPECT_EQ(array == nullptr, reached);
        if (array != nullptr) MEM_LibererTableau(&array);
        return reached;
    });
    // Growth of a non-empty array: the old storage stays with its elements.
    const std::vector<double> start = {1.5, 2.5, 3.5, 4.5, 5.5};
    for (const int at : {-1, 0, 3}) {
        tryEveryAllocationFailure([&](long long k) {
            void* array = nullptr;
            int count = 0;
            MEM_EtendreTableauParBloc(&array, sizeof(double), &count, 5);
            std::memcpy(array, start.data(), sizeof(double) * start.size());
            bool reached = false;
            {
                FailingAllocation failing(k);
                if (at < 0) {
                    MEM_EtendreTableauParBloc(&array, sizeof(double), &count, 40);
                } else {
                    MEM_InsererElementsDansTableau(&array, sizeof(double), &count, at, 40);
                }
                reached = failing.reached();
            }
            EXPECT_EQ(memError(), reached ? ERR_FAILURE : 0);
            EXPECT_NE(array, nullptr);
            if (reached) {
                EXPECT_EQ(readDoubles(array, 5), start);
            }
            MEM_LibererTableau(&array);
            return reached;
        });
    }
    // Resizing: a failure releases the old block and leaves null.
    tryEveryAllocationFailure([](long long k) {
        void* array = nullptr;
        MEM_CreerTableau(&array, sizeof(double), 5);
        bool reached = false;
        {
            FailingAllocation failing(k);
            MEM_ModifierTailleTableau(&array, sizeof(double), 500);
            reached = failing.reached();
        }
        EXPECT_EQ(memError(), reached ? ERR_FAILURE : 0);
        EXPECT_EQ(array == nullptr, reached);
        if (array != nullptr) MEM_LibererTableau(&array);
        return reached;
    });
}

TEST(AllocationFailures, DynamicArraysFailCleanly) {
    tryEveryAllocationFailure([](long long k) {
        QmDynArray* array = nullptr;
        int created = 0;
        int inserted = 0;
        bool reached = false;
        {
            FailingAllocation failing(k);
            qmDynArray_create(&array, sizeof(int));  // 0 in every case; null on failure
            created = array != nullptr ? 0 : ERR_FAILURE;
            if (created == 0) inserted = qmDynArray_insertElements(array, -1, 35);
            reached = failing.reached();
        }
        // A failed growth is reported only through the storage: 0 comes back regardless.
        EXPECT_EQ(inserted, 0);
        if (!reached) {
            EXPECT_EQ(qmDynArray_getSize(array), 35);
        }
        if (reached && created == 0) {
            EXPECT_EQ(qmDynArray_getElementAdd(array, 0), nullptr);
        }
        if (array != nullptr) qmDynArray_destroy(&array);
        return reached;
    });
    // Cloning and inserting a copy of an element of the array itself.
    tryEveryAllocationFailure([](long long k) {
        QmDynArray* array = nullptr;
        qmDynArray_create(&array, sizeof(int));
        for (int v = 0; v < 10; ++v) qmDynArray_insertAndSetElement(array, -1, &v);
        QmDynArray* copy = nullptr;
        int cloned = 0;
        int inserted = 0;
        bool reached = false;
        {
            FailingAllocation failing(k);
            cloned = qmDynArray_clone(&copy, array);
            inserted = qmDynArray_insertAndSetElement(array, 0, qmDynArray_getElementAdd(array, 9));
            reached = failing.reached();
        }
        if (!reached) {
            EXPECT_EQ(cloned, 0);
            EXPECT_EQ(inserted, 0);
            int first = -1;
            qmDynArray_getElement(array, 0, &first);
            EXPECT_EQ(first, 9);
        }
        if (copy != nullptr) qmDynArray_destroy(&copy);
        qmDynArray_destroy(&array);
        return reached;
    });
}

TEST(AllocationFailures, LinkedListsKeepTheirRecords) {
    tryEveryAllocationFailure([](long long k) {
        QmLinkedList* list = nullptr;
        QmLinkedList* other = nullptr;
        QmLListIterator* it = nullptr;
        bool reached = false;
        int status = 0;
        {
            FailingAllocation failing(k);
            status |= qmLinkedList_create(&list, sizeof(double));
            status |= qmLinkedList_create(&other, sizeof(double));
            for (int i = 0; list != nullptr && other != nullptr && i < 6; ++i) {
                const double value = 10.0 - i;
                status |= qmLinkedList_pushBack(list, &value);
                status |= qmLinkedList_insertInOrder(other, &value);
            }
            if (list != nullptr) status |= qmLListIterator_create(&it, list);
            if (list != nullptr && other != nullptr) {
                status |= qmLinkedList_appendCopy(list, other);
                status |= qmLinkedList_mergeCopyUnique(list, other);
                status |= qmLinkedList_sort(list);
            }
            reached = failing.reached();
        }
        if (reached) {
            EXPECT_NE(status, 0);
        } else {
            EXPECT_EQ(status, 0);
            EXPECT_GE(qmLinkedList_size(list), 6);
        }
        if (it != nullptr) qmLListIterator_destroy(&it);
        if (list != nullptr) qmLinkedList_destroy(&list);
        if (other != nullptr) qmLinkedList_destroy(&other);
        return reached;
    });
}

namespace {

// The texts of a string list, "" for a member without text.
std::vector<std::string> texts(const QmStrList* list) {
    std::vector<std::string> out;
    for (int i = 0; i < qmStrList_size(list); ++i) {
        const char* text = nullptr;
        qmStrList_getMember(&text, nullptr, list, i);
        out.emplace_back(text != nullptr ? text : "");
    }
    return out;
}

QmStrList* namedList(int n) {
    QmStrList* list = qmStrList_create(n, 2);
    for (int i = 0; i < n; ++i) {
        const std::string name = "station " + std::to_string(i);
        const int fields[2] = {i, -i};
        qmStrList_setMember(list, i, name.c_str(), fields);
    }
    return list;
}

}  // namespace

TEST(AllocationFailures, StringListsLoseNothing) {
    // Each operation either succeeds or leaves every member's text as it was.
    struct Operation {
        const char* name;
        int (*run)(QmStrList* list, QmStrList* other);
    };
    const Operation operations[] = {
        {"delete", [](QmStrList* l, QmStrList*) { return qmStrList_deleteMember(l, 9, 2); }},
        {"delete middle", [](QmStrList* l, QmStrList*) { return qmStrList_deleteMember(l, 3, 4); }},
        {"insert", [](QmStrList* l, QmStrList*) {
             int at = 0;
             return qmStrList_insertMember(&at, l, 4, 15);
         }},
        {"append", [](QmStrList* l, QmStrList*) {
             int at = 0;
             return qmStrList_insertMember(&at, l, -1, 1);
         }},
        {"set", [](QmStrList* l, QmStrList*) {
             return qmStrList_setMember(l, 2, "a new and longer name", nullptr);
         }},
        {"copy", [](QmStrList* l, QmStrList* o) { return qmStrList_copy(l, o); }},
        {"move", [](QmStrList* l, QmStrList*) { return qmStrList_moveMembers(l, 0, 5, 4); }},
    };
    for (const Operation& operation : operations) {
        SCOPED_TRACE(operation.name);
        tryEveryAllocationFailure([&](long long k) {
            QmStrList* list = namedList(11);
            QmStrList* other = namedList(4);
            const std::vector<std::string> before = texts(list);
            int status = 0;
            bool reached = false;
            {
                FailingAllocation failing(k);
                status = operation.run(list, other);
                reached = failing.reached();
            }
            if (reached && status != 0) {
                EXPECT_EQ(status, ERR_FAILURE);
                EXPECT_EQ(qmStrList_size(list), 11);
                // A move writes member by member: what it has not reached yet is unchanged,
                // and no text is ever lost to a null.
                if (std::string(operation.name) != "move") {
                    EXPECT_EQ(texts(list), before);
                }
            }
            if (!reached) {
                EXPECT_EQ(status, 0);
            }
            qmStrList_destroy(list);
            qmStrList_destroy(other);
            return reached;
        });
    }
    // Creation itself.
    tryEveryAllocationFailure([](long long k) {
        QmStrList* list = nullptr;
        bool reached = false;
        {
            FailingAllocation failing(k);
            list = qmStrList_create(11, 1);
            reached = failing.reached();
        }
        EXPECT_EQ(list == nullptr, reached);
        qmStrList_destroy(list);
        return reached;
    });
}

}  // namespace kbtest
