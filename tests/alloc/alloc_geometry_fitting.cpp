// Every allocation failure of the matrices, the vertical profile fit, the transformation fits
// and the geoid tile search.
#include <cmath>
#include <filesystem>
#include <fstream>
#include <vector>

#include "korvelbase/korvelbase.h"
#include "tests/alloc/fault_driver.hpp"

namespace kbtest {

TEST(AllocationFailures, MatricesReportFailureAndLeaveNothingBehind) {
    tryEveryAllocationFailure([](long long k) {
        DenseMatrix a{0, 0, nullptr};
        DenseMatrix b{0, 0, nullptr};
        DenseMatrix product{0, 0, nullptr};
        DenseMatrix difference{0, 0, nullptr};
        int statuses[5] = {};
        bool reached = false;
        {
            FailingAllocation failing(k);
            statuses[0] = qmMatrix_memMatrix(&a, 40, 40);
            statuses[1] = qmMatrix_memMatrix(&b, 40, 40);
            if (statuses[0] == 0 && statuses[1] == 0) {
                for (int i = 0; i < 40; ++i) {
                    qmMatrix_putElementMatrix(&a, i, i, 2.0);
                    qmMatrix_putElementMatrix(&b, i, i, 1.0);
                }
                statuses[2] = qmMatrix_multMatrix(&product, 0, &a, 1, &b);
                statuses[3] = qmMatrix_subtractMatrix(&difference, &a, &b);
                statuses[4] = qmMatrix_invertMatrix(&a);  // index vectors from the heap
            }
            reached = failing.reached();
        }
        for (const int status : statuses) EXPECT_TRUE(status == 0 || status == ERR_FAILURE);
        if (!reached) {
            for (const int status : statuses) EXPECT_EQ(status, 0);
            EXPECT_EQ(qmMatrix_getElementMatrix(&a, 3, 3), 0.5);
        }
        qmMatrix_freeMatrix(&a);
        qmMatrix_freeMatrix(&b);
        qmMatrix_freeMatrix(&product);
        qmMatrix_freeMatrix(&difference);
        return reached;
    });
}

TEST(AllocationFailures, VerticalFitReturnsNullArraysOrAWholeResult) {
    std::vector<double> stations;
    std::vector<double> levels;
    for (int i = 0; i <= 600; ++i) {
        stations.push_back(i);
        levels.push_back(100 + 3 * std::sin(i / 50.0) + 0.01 * ((i * 7919) % 13 - 6));
    }
    qmBestFit_verticalProfileInitialize(0.05, 0.05, 20, 20, 10, 1.0, 0, 0, 0);
    tryEveryAllocationFailure([&](long long k) {
        double* s = nullptr;
        double* l = nullptr;
        double* v = nullptr;
        int m = -1;
        int status = 0;
        bool reached = false;
        {
            FailingAllocation failing(k);
            status = qmBestFit_verticalComputeProfile(&s, &l, &v, &m, stations.data(), levels.data(),
                                                      int(stations.size()));
            reached = failing.reached();
        }
        if (status != 0) {
            EXPECT_EQ(status, ERR_FAILURE);
            EXPECT_TRUE(s == nullptr && l == nullptr && v == nullptr && m == 0);
        } else {
            EXPECT_GE(m, 2);
        }
        if (!reached) {
            EXPECT_EQ(status, 0);
        }
        qmMem_free(s);
        qmMem_free(l);
        qmMem_free(v);
        return reached;
    });
    std::vector<Point3d> points;
    for (std::size_t i = 0; i < stations.size(); i += 3) points.push_back({stations[i], levels[i], 0});
    tryEveryAllocationFailure([&](long long k) {
        Point3d* out = nullptr;
        int count = 0;
        int status = 0;
        bool reached = false;
        {
            FailingAllocation failing(k);
            status = qmPoint_verticalComputeProfile(&out, &count, points.data(), int(points.size()), 0,
                                                    0.05, 0.05, 20, 20, 10, 1.0, 0, 0, 0);
            reached = failing.reached();
        }
        EXPECT_EQ(status == 0, out != nullptr);
        if (!reached) {
            EXPECT_EQ(status, 0);
        }
        qmMem_free(out);
        return reached;
    });
}

TEST(AllocationFailures, TransformationFitsFailCleanly) {
    std::vector<double> points;
    for (int i = 0; i < 12; ++i) {
        const double x = 37.0 * i, y = 11.0 * i * i;
        points.insert(points.end(), {x, 0.01, y, 0.01, 0.9 * x - 0.4 * y + 5, 0.01,
                                     0.4 * x + 0.9 * y - 7 + 1e-4 * x * y / (1 + i), 0.01});
    }
    tryEveryAllocationFailure([&](long long k) {
        double p[8], vf, rm;
        int statuses[3];
        bool reached = false;
        {
            FailingAllocation failing(k);
            statuses[0] = qmBestFit_transform2d(&p[0], &p[1], &p[2], &p[3], &vf, &rm, 12, points.data());
            statuses[1] = qmBestFit_transformAffine2d(&p[0], &p[1], &p[2], &p[3], &p[4], &p[5], &vf,
                                                      &rm, 12, points.data());
            statuses[2] = qmBestFit_transformProjective2d(&p[0], &p[1], &p[2], &p[3], &p[4], &p[5],
                                                          &p[6], &p[7], &vf, &rm, 12, points.data());
            reached = failing.reached();
        }
        for (const int status : statuses) EXPECT_TRUE(status == 0 || status == ERR_FAILURE);
        if (!reached) {
            EXPECT_EQ(statuses[0], 0);
            EXPECT_EQ(statuses[1], 0);
        }
        return reached;
    });
}

TEST(AllocationFailures, GeoidTileSearchFailsCleanly) {
    namespace fs = std::filesystem;
    const fs::path folder = fs::temp_directory_path() / "kb-alloc-geoid";
    fs::create_directories(folder);
    {
        std::ofstream out(folder / "g2003u01.bin", std::ios::binary);
        const double header[4] = {40, 0, 1, 1};
        const int counts[3] = {5, 5, 1};
        out.write(reinterpret_cast<const char*>(header), sizeof header);
        out.write(reinterpret_cast<const char*>(counts), sizeof counts);
        for (int i = 0; i < 25; ++i) {
            const float v = 3.5f;
            out.write(reinterpret_cast<const char*>(&v), sizeof v);
        }
    }
    const std::string dir = folder.string();
    tryEveryAllocationFailure([&](long long k) {
        int status = 0;
        bool reached = false;
        {
            FailingAllocation failing(k);
            status = qmGeoid_initModelByGeoid(2, dir.c_str(), 42, 2, 1);
            reached = failing.reached();
        }
        double n = -1;
        if (status == 0) {
            EXPECT_EQ(qmGeoid_getUndulationAtLatLong(&n, 42, 2, 1), 0);
            EXPECT_EQ(n, 3.5);
        } else {
            EXPECT_EQ(status, 1);
            EXPECT_EQ(qmGeoid_getUndulationAtLatLong(&n, 42, 2, 1), 1);
        }
        if (!reached) {
            EXPECT_EQ(status, 0);
        }
        qmGeoid_closeModel();
        return reached;
    });
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}

}  // namespace kbtest
