// korvel transform: plane coordinate transformations from control points.
//   transform fit    - similarity, affine or projective parameters by least squares
//   transform apply  - map points with given parameters
#include <CLI/CLI.hpp>
#include <cmath>
#include <fmt/format.h>
#include <map>

#include "cli/commands.hpp"
#include "cli/errors.hpp"
#include "cli/report.hpp"
#include "cli/table.hpp"
#include "korvelbase/bestfit_transform.h"

namespace korvel {

namespace {

struct ModelInfo {
    std::vector<std::string> names;
    std::size_t minimumPoints;
};

const std::map<std::string, ModelInfo>& models() {
    static const std::map<std::string, ModelInfo> table = {
        {"similarity", {{"a", "b", "tx", "ty"}, 2}},
        {"affine", {{"a", "b", "c", "d", "e", "f"}, 3}},
        {"projective", {{"a", "b", "c", "d", "e", "f", "g", "h"}, 4}},
    };
    return table;
}

const ModelInfo& modelInfo(const std::string& model) {
    const auto found = models().find(model);
    if (found == models().end()) throw UsageError("unknown model '" + model + "' (similarity, affine, projective)");
    return found->second;
}

void apply(const std::string& model, const std::vector<double>& p, double x, double y, double& X, double& Y) {
    if (model == "similarity") {
        qmBestFit_transformPtBy2d(&X, &Y, p[0], p[1], p[2], p[3], x, y);
    } else if (model == "affine") {
        qmBestFit_transformPtByAffine2d(&X, &Y, p[0], p[1], p[2], p[3], p[4], p[5], x, y);
    } else {
        qmBestFit_transformPtByProjective2d(&X, &Y, p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7], x, y);
    }
}

struct FitOptions {
    std::string input;
    std::string model = "similarity";
    double sdSource = 0.005;
    double sdTarget = 0.01;
    std::string paramsOut;
    OutputOptions output;
};

void runFit(const FitOptions& o) {
    const ModelInfo& info = modelInfo(o.model);
    const Table t = readTable(o.input, {{"source_x"}, {"source_y"}, {"target_x"}, {"target_y"},
                                        {"sd_source", false, o.sdSource}, {"sd_target", false, o.sdTarget}});
    if (t.rows() < info.minimumPoints) {
        throw InputError(fmt::format("{}: a {} fit needs at least {} control points", o.input, o.model,
                                     info.minimumPoints));
    }
    std::vector<double> records;
    for (std::size_t i = 0; i < t.rows(); ++i) {
        const double ss = t.column("sd_source")[i], st = t.column("sd_target")[i];
        records.insert(records.end(), {t.column("source_x")[i], ss, t.column("source_y")[i], ss,
                                       t.column("target_x")[i], st, t.column("target_y")[i], st});
    }
    std::vector<double> p(info.names.size());
    double variance = 0.0, residual = 0.0;
    const int n = static_cast<int>(t.rows());
    int status = 0;
    if (o.model == "similarity") {
        status = qmBestFit_transform2d(&p[0], &p[1], &p[2], &p[3], &variance, &residual, n, records.data());
    } else if (o.model == "affine") {
        status = qmBestFit_transformAffine2d(&p[0], &p[1], &p[2], &p[3], &p[4], &p[5], &variance,
                                             &residual, n, records.data());
    } else {
        status = qmBestFit_transformProjective2d(&p[0], &p[1], &p[2], &p[3], &p[4], &p[5], &p[6], &p[7],
                                                 &variance, &residual, n, records.data());
    }
    if (status != 0) throw InputError(o.input + ": the " + o.model + " adjustment did not converge");
    Report parameters({"parameter", "value"});
    for (std::size_t k = 0; k < p.size(); ++k) parameters.add({info.names[k], fmt::format("{:.12g}", p[k])});
    if (o.model == "similarity") {
        parameters.add({"scale", fmt::format("{:.12g}", std::hypot(p[0], p[1]))});
        parameters.add({"rotation_deg", fmt::format("{:.9f}", std::atan2(p[1], p[0]) * 180.0 / M_PI)});
    }
    parameters.add({"variance_factor", fmt::format("{:.6g}", variance)});
    parameters.add({"residual_measure", fmt::format("{:.6g}", residual)});
    Report residuals({"point", "residual_x", "residual_y"});
    for (std::size_t i = 0; i < t.rows(); ++i) {
        double X = 0.0, Y = 0.0;
        apply(o.model, p, t.column("source_x")[i], t.column("source_y")[i], X, Y);
        residuals.add({std::to_string(i + 1), fixed(t.column("target_x")[i] - X, 4),
                       fixed(t.column("target_y")[i] - Y, 4)});
    }
    const OutputFile out(o.output.output);
    const std::string hash = o.output.csv ? "# " : "";
    out.write(hash + o.model + " parameters\n" + parameters.render(o.output.csv) + "\n" + hash +
              "residuals (target - transformed source)\n" + residuals.render(o.output.csv));
    if (!o.paramsOut.empty()) {
        Report saved({"name", "value"});
        for (std::size_t k = 0; k < p.size(); ++k) saved.add({info.names[k], fmt::format("{:.17g}", p[k])});
        OutputFile(o.paramsOut).write("# " + o.model + "\n" + saved.csv());
    }
}

struct ApplyOptions {
    std::string input;
    std::string model = "similarity";
    std::vector<double> params;
    std::string paramsFile;
    OutputOptions output;
};

void runApply(const ApplyOptions& o) {
    const ModelInfo& info = modelInfo(o.model);
    std::vector<double> p = o.params;
    if (!o.paramsFile.empty()) {
        const Table saved = readTable(o.paramsFile, {{"name", true, 0.0, true}, {"value"}});
        p = saved.column("value");
    }
    if (p.size() != info.names.size()) {
        throw UsageError(fmt::format("a {} transformation has {} parameters, {} given", o.model,
                                     info.names.size(), p.size()));
    }
    const Table t = readTable(o.input, {{"x"}, {"y"}});
    Report report({"x", "y", "X", "Y"});
    for (std::size_t i = 0; i < t.rows(); ++i) {
        double X = 0.0, Y = 0.0;
        apply(o.model, p, t.column("x")[i], t.column("y")[i], X, Y);
        report.add({fixed(t.column("x")[i], 4), fixed(t.column("y")[i], 4), fixed(X, 4), fixed(Y, 4)});
    }
    OutputFile(o.output.output).write(report.render(o.output.csv));
}

}  // namespace

void addTransform(CLI::App& app) {
    auto* group = app.add_subcommand("transform", "plane coordinate transformations from control points");
    group->require_subcommand(1);
    static FitOptions fit;
    auto* fitCommand = group->add_subcommand("fit", "least-squares transformation parameters from control points");
    fitCommand->add_option("CONTROL", fit.input,
                           "CSV: source_x, source_y, target_x, target_y [, sd_source, sd_target]")
        ->required();
    fitCommand->add_option("--model", fit.model, "similarity, affine or projective")->capture_default_str();
    fitCommand->add_option("--sd-source", fit.sdSource, "standard deviation of source coordinates")
        ->capture_default_str();
    fitCommand->add_option("--sd-target", fit.sdTarget, "standard deviation of target coordinates")
        ->capture_default_str();
    fitCommand->add_option("--params-out", fit.paramsOut, "also write the parameters for 'transform apply'");
    addOutputOptions(*fitCommand, fit.output);
    fitCommand->footer("Example:\n  korvel transform fit examples/data/control_points.csv --model similarity");
    fitCommand->callback([] { runFit(fit); });

    static ApplyOptions apply;
    auto* applyCommand = group->add_subcommand("apply", "transform points (columns x, y)");
    applyCommand->add_option("POINTS", apply.input, "CSV with columns x, y")->required();
    applyCommand->add_option("--model", apply.model, "similarity, affine or projective")->capture_default_str();
    applyCommand->add_option("--params", apply.params, "the parameters in order (a,b,tx,ty for a similarity)")
        ->delimiter(',');
    applyCommand->add_option("--params-file", apply.paramsFile, "parameters written by 'transform fit --params-out'");
    addOutputOptions(*applyCommand, apply.output);
    applyCommand->footer("Example:\n  korvel transform apply points.csv --model similarity --params 0.9998,0.0175,1000,2000");
    applyCommand->callback([] { runApply(apply); });
}

}  // namespace korvel
