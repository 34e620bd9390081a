// Every allocation failure of the point arrays and the horizontal fits: a failure gives the
// documented result, leaves the caller's array as it was and leaks nothing.
#include <cmath>
#include <vector>

#include "korvelbase/korvelbase.h"
#include "tests/alloc/fault_driver.hpp"

namespace kbtest {

namespace {

std::vector<Point3d> ring(int n) {
    std::vector<Point3d> points;
    for (int i = 0; i < n; ++i) {
        const double a = 2 * 3.14159265358979 * i / n;
        points.push_back({100 + 50 * std::cos(a), 200 + 30 * std::sin(a), 1.0 * i});
    }
    return points;
}

}  // namespace

TEST(AllocationFailures, PointArraysKeepTheCallersData) {
    const std::vector<Point3d> original = ring(40);
    tryEveryAllocationFailure([&](long long k) {
        Point3d* copy = nullptr;
        Point3d* closable = nullptr;
        int count = 40;
        int statuses[4] = {};
        int verdict = 5;
        std::vector<Point3d> shifted(original.size());
        bool reached = false;
        {
            FailingAllocation failing(k);
            statuses[0] = qmPointArray_clone(&copy, original.data(), 40);
            if (statuses[0] == 0) {
                closable = copy;
                statuses[1] = qmPointArray_closePolygon(&closable, &count, 1e-9);
            }
            statuses[2] = qmPointArray_isArrayWithinPolygon(&verdict, original.data(), 40,
                                                            original.data(), 40);
            statuses[3] = qmPointArray_copyParallel2d(shifted.data(), original.data(), 40, 2.5);
            reached = failing.reached();
        }
        for (const int status : statuses) EXPECT_TRUE(status == 0 || status == ERR_FAILURE);
        if (statuses[0] == 0 && statuses[1] != 0) {
            // A failed closing leaves the array and its count as they were.
            EXPECT_EQ(count, 40);
            EXPECT_EQ(closable, copy);
            EXPECT_EQ(closable[39].x, original[39].x);
        }
        if (statuses[0] == 0 && statuses[1] == 0) {
            EXPECT_EQ(count, 41);
        }
        if (!reached) {
            for (const int status : statuses) EXPECT_EQ(status, 0);
            EXPECT_NE(verdict, -1);
        }
        qmMem_free(closable);
        return reached;
    });
}

TEST(AllocationFailures, HorizontalFitsFailCleanly) {
    std::vector<double> observations;
    std::vector<Point3d> plane;
    for (int i = 0; i < 30; ++i) {
        const double a = 0.1 * i;
        observations.insert(observations.end(), {50 + 20 * std::cos(a), 0.01, 60 + 20 * std::sin(a), 0.01});
        plane.push_back({1.0 * i, 0.5 * i * i, 3 + 0.2 * i - 0.01 * i * i});
    }
    tryEveryAllocationFailure([&](long long k) {
        double cx = 0, cy = 0, r = 0, d[5];
        double p[7];
        int statuses[3];
        bool reached = false;
        {
            FailingAllocation failing(k);
            statuses[0] = qmBestFit_horzCurveCalc(&cy, &cx, &r, 30, observations.data());
            statuses[1] = qmBestFit_lineCalc(&d[0], &d[1], &d[2], &d[3], &d[4], 30, observations.data());
            statuses[2] = qmBestFit_planeCalc(&p[0], &p[1], &p[2], &p[3], &p[4], &p[5], &p[6], 30, plane.data());
            reached = failing.reached();
        }
        for (const int status : statuses) EXPECT_TRUE(status == 0 || status == ERR_FAILURE);
        if (!reached) {
            for (const int status : statuses) EXPECT_EQ(status, 0);
            EXPECT_NEAR(r, 20.0, 1e-6);
        }
        return reached;
    });
}

}  // namespace kbtest
