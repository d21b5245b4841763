/// `mirel mesh`: fewer triangles for nearly the same surface.
#include "Command.h"
#include "Errors.h"
#include "Session.h"
#include "input/NotedInput.h"
#include "meshes/MeshChange.h"
#include "meshes/MeshOutput.h"
#include "meshes/ObjInput.h"
#include "options/Checks.h"
#include "output/Interrupt.h"
#include "output/Summary.h"
#include "pictures/MeshPicture.h"

#include <fmt/format.h>

#include <cmath>
#include <cstdio>
#include <filesystem>

namespace mirel {

namespace {

using MirelAlgorithms::MeshSimplification;

constexpr FileKind meshFile = {"an OBJ file", "mesh.obj"};

void warn(const std::string& text) { fmt::print(stderr, "mirel mesh: warning: {}\n", text); }

class MeshCommand : public Command {
 public:
  void addOptions(CLI::App& app) override {
    app.add_option("mesh", in_, "a Wavefront OBJ file (docs/obj-files.md), or - for standard input")
        ->type_name("IN.obj");
    app.add_option("simplified", out_, "where the simplified mesh goes; may be IN")->type_name("OUT.obj");
    triangles_ = app.add_option("--triangles", target_, "triangles to simplify to")->type_name("N")->check(atLeast(1));
    ratio_ =
        app.add_option("--ratio", share_, "the same as a share of the triangles, above 0 and up to 1")->type_name("R");
    app.add_flag("--lossless", losslessly_, "only collapses that change the surface by practically nothing");
    aggressive_ = app.add_option("--aggressiveness", aggressiveness_,
                                 "how fast the accepted error rises from pass to pass; less: slower, a better surface")
                      ->type_name("A")
                      ->capture_default_str();
    app.add_flag("--picture", picture_, "both meshes side by side as mesh.png and in the report");
    common_.addOutput(app);
  }

  int run(CLI::App& app) override {
    Session session(app, common_);
    checkOptions();
    std::vector<InputFile> inputs;
    MeshChange change;
    MeshSimplification mesh = read(session, change, inputs);
    const StagedFile& target = session.stageFile(out_);
    const Surface before(mesh);
    simplify(session, mesh, change);
    if (!mesh.triangles.empty()) session.clock().time("writing", [&] { writeMesh(target, mesh); });
    change.rounding = roundingInFile(mesh);
    if (!mesh.triangles.empty()) warnAboutLibrary(mesh.mtllib);
    const Surface after(mesh);
    mesh = {};
    measure(session, before, after, change);
    return show(session, before, after, change, inputs);
  }

 private:
  void checkOptions() const {
    if (in_.empty()) throw UsageError("no mesh given; an OBJ file and a name for the simplified one expected");
    if (out_.empty()) throw UsageError("no name for the simplified mesh given; one expected after the mesh");
    const std::size_t goals = (triangles_->count() > 0) + (ratio_->count() > 0) + losslessly_;
    if (goals != 1) {
      throw UsageError(fmt::format("{} of --triangles, --ratio, --lossless given, one of them expected",
                                   goals == 0 ? "none" : fmt::format("{}", goals)));
    }
    if (ratio_->count() > 0 && !(share_ > 0 && share_ <= 1)) {
      throw UsageError(fmt::format("--ratio: {} given, a number above 0 and up to 1 expected", share_));
    }
    if (!(aggressiveness_ >= 0) || std::isinf(aggressiveness_)) {
      throw UsageError(fmt::format("--aggressiveness: {} given, a number from 0 on expected", aggressiveness_));
    }
    if (losslessly_ && aggressive_->count() > 0) {
      throw UsageError("--aggressiveness: of no effect with --lossless, one of them expected");
    }
  }

  MeshSimplification read(Session& session, MeshChange& change, std::vector<InputFile>& inputs) const {
    return session.clock().time("reading", [&] {
      ObjInput input(in_, readInput(in_, meshFile, inputs));
      for (const std::string& warning : input.warnings()) warn(warning);
      change.in = shownName(in_);
      change.rewritten = input.rewritten();
      MeshSimplification mesh = input.load(session.folder().stagingFolder() + "input.obj");
      change.textured = (mesh.triangles[0].attr & 4) != 0;
      change.materials = mesh.materials.size();
      return mesh;
    });
  }

  void simplify(Session& session, MeshSimplification& mesh, MeshChange& change) const {
    checkInterrupt();
    const std::size_t triangles = mesh.triangles.size();
    if (triangles_->count() > 0) change.asked = target_;
    if (ratio_->count() > 0) change.asked = static_cast<int>(std::lround(share_ * static_cast<double>(triangles)));
    change.aggressiveness = aggressiveness_;
    session.clock().time("simplifying", [&] {
      if (change.asked) {
        mesh.simplify_mesh(*change.asked, aggressiveness_, false);
      } else {
        mesh.simplify_mesh_lossless(false);
      }
    });
    checkInterrupt();
  }

  void measure(Session& session, const Surface& before, const Surface& after, MeshChange& change) const {
    session.clock().time("distance", [&] {
      change.before = MeshSize(before);
      change.after = MeshSize(after);
      if (!change.isEmpty()) change.distance = distanceBetween(before, after);
    });
    constexpr double seen = 1e-4;
    if (change.rounding > seen * change.before.diagonal) {
      warn(
          fmt::format("{}: coordinates are written with six digits, which rounds them by up to {:.3g}; a mesh nearer "
                      "to the origin loses less",
                      out_, change.rounding));
    }
  }

  /// The name in a mesh is relative to its folder.
  void warnAboutLibrary(const std::filesystem::path& library) const {
    namespace fs = std::filesystem;
    if (library.empty() || library.is_absolute() || in_ == "-") return;
    std::error_code ignored;
    const fs::path before = fs::path(in_).parent_path() / library, after = fs::path(out_).parent_path() / library;
    if (fs::exists(before, ignored) && !fs::exists(after, ignored)) {
      warn(fmt::format("{}: its materials are looked for in {}, which is not there; {} can be copied", out_,
                       after.string(), before.string()));
    }
  }

  int show(Session& session, const Surface& before, const Surface& after, const MeshChange& change,
           const std::vector<InputFile>& inputs) const {
    Report report = meshReport(change);
    std::string files = change.isEmpty() ? "" : summaryLine("simplified", out_);
    if (picture_ && !change.isEmpty()) {
      session.clock().time("picture", [&] {
        const MeshPicture picture = drawMeshes(before, after, change);
        session.folder().writePicture("mesh.png", picture.sheet);
        report.pictures.push_back({"Before and after from the same side, whole and near the middle; open borders red",
                                   reportJpeg(picture.sheet), reportJpeg(picture.narrow)});
      });
      files += summaryLine("picture", session.folder().shownPath("mesh.png"));
    }
    session.finish(report, inputs, summaryText(change, session.clock()) + files);
    if (!change.isEmpty()) return success;
    fmt::print(stderr, "mirel mesh: {}: every one of {} triangles was collapsed; {} is not written\n", change.in,
               change.before.triangles, out_);
    return noResult;
  }

  RunOptions common_;
  std::string in_, out_;
  int target_ = 0;
  double share_ = 0, aggressiveness_ = 7;
  bool losslessly_ = false, picture_ = false;
  CLI::Option *triangles_ = nullptr, *ratio_ = nullptr, *aggressive_ = nullptr;
};

const CommandRegistration<MeshCommand> registration("mesh", "simplify a triangle mesh",
                                                    {"mirel mesh figure.obj light.obj --triangles 5000 --picture",
                                                     "mirel mesh figure.obj light.obj --lossless --json"});

}  // namespace

}  // namespace mirel
