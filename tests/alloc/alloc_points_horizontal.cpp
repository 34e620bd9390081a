// Every allocation failure of the point arrays and the horizontal fits: a clear status, the
// caller's data as documented, nothing leaked (the sanitizer build checks the last).
#include <cmath>
#include <cstring>
#include <vector>

#include "korvelbase/korvelbase.h"
#include "tests/alloc/fault_driver.hpp"

namespace kbtest {

namespace {

std::vector<Point3d> ringOf(int n) {
    std::vector<Point3d> ring;
    for (int i = 0; i < n; ++i) {
        const double a = 6.283185307179586 * i / n;
        ring.push_back({10 * std::cos(a), 10 * std::sin(a), double(i)});
    }
    return ring;
}

}  // namespace

TEST(AllocationFailures, PointArraysKeepTheCallersData) {
    const std::vector<Point3d> ring = ringOf(40);
    tryEveryAllocationFailure([&](long long k) {
        Point3d* copy = nullptr;
        std::vector<Point3d> out(ring.size());
        std::vector<int> keep(ring.size());
        int verdict = 5, status = 0, statusParallel = 0, statusFilter = 0, statusClone = 0;
        bool reached = false;
        {
            FailingAllocation failing(k);
            statusClone = qmPointArray_clone(&copy, ring.data(), (int)ring.size());
            status = qmPointArray_isArrayWithinPolygon(&verdict, ring.data(), (int)ring.size(),
                                                       ring.data(), (int)ring.size());
            statusParallel = qmPointArray_copyParallel2d(out.data(), ring.data(),
                                                         (int)ring.size(), 1.0);
            statusFilter = qmPointArray_filterByHorVerTolerance2d(
                keep.data(), ring.data(), nullptr, (int)ring.size(), 0.5, 0.0);
            reached = failing.reached();
        }
        if (statusClone == 0) {
            int n = (int)ring.size() - 1;  // open ring: closing must grow it
            const int closeStatus = [&] {
                FailingAllocation failing(1);
                return qmPointArray_closePolygon(&copy, &n, 1e-9);
            }();
            EXPECT_EQ(ERR_FAILURE, closeStatus);
            EXPECT_EQ((int)ring.size() - 1, n);
            EXPECT_EQ(0, std::memcmp(copy, ring.data(), (ring.size() - 1) * sizeof(Point3d)));
            qmPointArray_free(&copy);
        } else {
            EXPECT_EQ(nullptr, copy);
        }
        if (status != 0) EXPECT_EQ(-1, verdict);
        else EXPECT_EQ(1, verdict);
        EXPECT_TRUE(statusParallel == 0 || statusParallel == ERR_FAILURE);
        EXPECT_TRUE(statusFilter == 0 || statusFilter == ERR_FAILURE);
        return reached;
    });
}

TEST(AllocationFailures, HorizontalFitsReportFailure) {
    std::vector<Point3d> pts;
    for (int i = 0; i < 12; ++i) pts.push_back({double(i % 4), double(i / 4), 0.5 * i});
    tryEveryAllocationFailure([&](long long k) {
        double mx, my, z, a, b, c, e, x, y, r;
        Point3d start{}, end{};
        int plane = 0, circle = 0, line = 0;
        bool reached = false;
        {
            FailingAllocation failing(k);
            plane = qmBestFit_planeCalc(&mx, &my, &z, &a, &b, &c, &e, (int)pts.size(), pts.data());
            circle = qmBestFit_horz3PtCurveCalcMatrix(&x, &y, &r, 0, 0, 1, 1, 2, 0);
            line = qmPoint_computeLineLeastSquares(&start, &end, nullptr, nullptr, pts.data(),
                                                   (int)pts.size());
            reached = failing.reached();
        }
        EXPECT_TRUE(plane == 0 || plane == ERR_FAILURE);
        if (circle == 0) EXPECT_NEAR(1.0, r, 1e-12);
        else EXPECT_EQ(ERR_FAILURE, circle);
        EXPECT_TRUE(line == 0 || line == ERR_FAILURE);
        return reached;
    });
}

}  // namespace kbtest
