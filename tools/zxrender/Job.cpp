#include "Job.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <exception>
#include <filesystem>
#include <iterator>
#include <new>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QString>

#include <unistd.h>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxPixelKit/Image.h>
#include <ZxPixelKit/Surface.h>
#include <ZxPixelKit/TDataSurface.h>

#include "Layers.h"
#include "Picture.h"

namespace {

using TClock = std::chrono::steady_clock;

double _Since(TClock::time_point begin) {
  const double seconds = std::chrono::duration<double>(TClock::now() - begin).count();
  return std::round(seconds * 1e6) / 1e6;
}

QString _ToQt(const std::string& text) { return QString::fromStdString(text); }

// Why a task ends before its last picture.
struct TFailure {
  const char* Status;
  std::string Blamed;
  std::string Reason;
};

bool _IsPicture(const std::string& name) {
  static constexpr const char* kEndings[] = {".png", ".jpg", ".jpeg", ".bmp", ".tga",
                                             ".pbm", ".pgm", ".ppm",  ".pnm", ".hdr"};
  const QString ending = _ToQt(std::filesystem::path(name).extension().string()).toLower();
  return std::any_of(std::begin(kEndings), std::end(kEndings),
                     [&](const char* known) { return ending == QLatin1String(known); });
}

// What the importer says, in one line.
std::string _Reworded(std::string text) {
  if (text.rfind("No suitable reader found", 0) == 0) {
    return "is of no kind that is read";
  }
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text;
}

class TJob {
public:
  TJob(const TCall& call, const TTask& task, int pipe, int standardOutput)
      : m_Call(call), m_Options(call.Options), m_Task(task), m_Pipe(pipe),
        m_StandardOutput(standardOutput), m_File(call.Options.Models[task.Model]) {}

  void Run();
  void Fail(const TFailure& failure) const;
  const std::string& File() const { return m_File; }

private:
  void _Send(QJsonObject event, const char* name) const;
  void _Load();
  void _SetCameras();
  void _DrawFrame(int frame);
  void _TakePictureFile();
  void _Finish(const DATASURFACE& picture, const TPictureNames& names, QJsonObject* record) const;
  QJsonObject _Check(const DATASURFACE& picture, const TPictureNames& names) const;
  void _WriteLayers(const TPictureNames& names, const zx_scene::TCamera& camera,
                    QJsonObject* record);
  void _Write(const std::string& name, TImageKind kind, const DATASURFACE& surface) const;
  QJsonObject _Describe(int frame) const;

  const TCall& m_Call;
  const TOptions& m_Options;
  const TTask& m_Task;
  int m_Pipe;
  int m_StandardOutput;
  std::string m_File;
  zx_scene::TModel m_Model;
  zx_scene::TScene m_Scene;
  std::vector<zx_scene::TCamera> m_Cameras;
  double m_DepthStep = 0;
  double m_LoadTime = 0;
};

void TJob::_Send(QJsonObject event, const char* name) const {
  event["event"] = name;
  const QByteArray line = QJsonDocument(event).toJson(QJsonDocument::Compact) + '\n';
  for (int at = 0; at < line.size();) {
    const ssize_t count =
        write(m_Pipe, line.data() + at, static_cast<std::size_t>(line.size() - at));
    if (count <= 0) {
      _exit(1); // nobody listens
    }
    at += static_cast<int>(count);
  }
}

void TJob::Fail(const TFailure& failure) const {
  _Send({{"status", failure.Status},
         {"blamed", _ToQt(failure.Blamed)},
         {"reason", _ToQt(failure.Reason)}},
        "failed");
}

void TJob::_Load() {
  const TClock::time_point begin = TClock::now();
  std::string error;
  std::vector<std::string> warnings;
  const bool loaded = m_File == "-" ? zx_scene::LoadModelBytes(m_Call.Input, m_Options.ModelFormat,
                                                               &m_Model, &error, &warnings)
                                    : zx_scene::LoadModel(m_File, &m_Model, &error, &warnings);
  for (const std::string& warning : warnings) {
    _Send({{"text", _ToQt(warning)}}, "warning");
  }
  if (!loaded) {
    // The importer catches what memory throws and makes a text of it.
    if (error.find("bad_alloc") != std::string::npos) {
      throw std::bad_alloc();
    }
    throw TFailure{"refused", m_File, _Reworded(error)};
  }
  _SetCameras();
  const bool zUp = m_Options.Up == TUpAxis::Z || (m_Options.Up == TUpAxis::Auto && m_Model.ZUp);
  if (!m_Scene.Create(m_Model, m_Options.View.Width, m_Options.View.Height, m_Options.Style, &error,
                      zUp)) {
    throw TFailure{"memory", m_File, error};
  }
  m_LoadTime = _Since(begin);
}

void TJob::_SetCameras() {
  zx_scene::TView view = m_Options.View;
  view.ZUp = m_Options.Up == TUpAxis::Z || (m_Options.Up == TUpAxis::Auto && m_Model.ZUp);
  if (m_Options.FromFileCamera) {
    std::string error;
    m_Cameras.resize(1);
    if (!zx_scene::TakeFileCamera(m_Model, view, m_Options.FileCamera, &m_Cameras[0], &error)) {
      throw TFailure{"refused", m_File, error};
    }
  } else {
    m_Cameras = zx_scene::FrameModel(m_Model, view, std::max(m_Options.Frames, 1));
  }
  if (!m_Options.Depth.empty()) {
    m_DepthStep = m_Options.DepthStep > 0 ? m_Options.DepthStep : zx_scene::DepthStepFor(m_Cameras);
  }
}

QJsonObject TJob::_Describe(int frame) const {
  const auto number = m_Task.FirstNumber + static_cast<std::size_t>(frame) -
                      static_cast<std::size_t>(m_Task.FirstFrame);
  QJsonObject record = {
      {"file", _ToQt(m_File)}, {"status", "drawn"}, {"number", static_cast<qint64>(number)}};
  if (m_Options.Frames > 0) {
    record["frame"] = frame;
  }
  return record;
}

QJsonObject TJob::_Check(const DATASURFACE& picture, const TPictureNames& names) const {
  TDataSurface before;
  TZxMessage reason;
  if (!LoadImage(names.Check, nullptr, &before, &reason)) {
    throw TFailure{"refused", names.Check, reason.what()};
  }
  std::vector<std::uint8_t> apart;
  const TComparison result = ComparePictures(picture, before, &apart);
  QJsonObject object = {{"picture", _ToQt(names.Check)}, {"same", result.Same}};
  if (!result.Reason.empty()) {
    object["reason"] = _ToQt(result.Reason);
  } else if (!result.Same) {
    object["differing"] = static_cast<qint64>(result.Differing);
    object["greatest"] = result.Greatest;
  }
  if (!names.Difference.empty() && !apart.empty()) {
    DATASURFACE surface = {};
    ds::Set(&surface, picture.Width, picture.Height, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3,
            apart.data());
    _Write(names.Difference, TImageKind::Png, surface);
  }
  return object;
}

void TJob::_Write(const std::string& name, TImageKind kind, const DATASURFACE& surface) const {
  std::string error;
  if (!WriteImage(name, kind, surface, m_StandardOutput, &error)) {
    throw TFailure{"unwritten", name == "-" ? "standard output" : name, error};
  }
}

void TJob::_Finish(const DATASURFACE& picture, const TPictureNames& names,
                   QJsonObject* record) const {
  (*record)["width"] = picture.Width;
  (*record)["height"] = picture.Height;
  (*record)["picture"] = _ToQt(names.Label);
  // Before anything is written: the picture to compare with may be the one to write.
  if (!names.Check.empty()) {
    const QJsonObject result = _Check(picture, names);
    (*record)["check"] = result;
    if (!result["same"].toBool()) {
      (*record)["status"] = "different";
    }
  }
  if (m_Options.Digest || m_Options.Json) {
    (*record)["digest"] = _ToQt(DigestOf(picture));
  }
  if (!names.Output.empty()) {
    _Write(names.Output, OutputKind(m_Options), picture);
  }
}

void TJob::_WriteLayers(const TPictureNames& names, const zx_scene::TCamera& camera,
                        QJsonObject* record) {
  zx_scene::TLayers layers;
  std::string error;
  if (!m_Scene.DrawLayers(camera, &layers, &error)) {
    throw TFailure{"memory", m_File, error};
  }
  const auto write = [&](const std::string& name, const zx_scene::TLayerImage& image) {
    _Write(name, KindOfName(name), image.Surface);
  };
  if (!names.Depth.empty()) {
    const bool pfm = KindOfName(names.Depth) == TImageKind::Pfm;
    write(names.Depth,
          pfm ? zx_scene::DepthAsFloats(layers) : zx_scene::DepthAsSteps(layers, m_DepthStep));
    (*record)["depth"] = _ToQt(names.Depth);
    if (!pfm) {
      (*record)["depthStep"] = m_DepthStep;
    }
  }
  if (!names.Normals.empty()) {
    const bool pfm = KindOfName(names.Normals) == TImageKind::Pfm;
    write(names.Normals,
          pfm ? zx_scene::NormalsAsFloats(layers) : zx_scene::NormalsAsColors(layers));
    (*record)["normals"] = _ToQt(names.Normals);
  }
  if (!names.Ids.empty()) {
    write(names.Ids, zx_scene::IdsAsColors(layers));
    (*record)["ids"] = _ToQt(names.Ids);
    QJsonArray meshes;
    for (std::size_t i = 0; i < m_Model.Meshes.size(); ++i) {
      const zx_scene::TMesh& mesh = m_Model.Meshes[i];
      meshes.append(QJsonObject{
          {"id", static_cast<qint64>(i + 1)},
          {"color", _ToQt(zx_scene::IdColorText(static_cast<std::uint32_t>(i + 1)))},
          {"name", _ToQt(mesh.Name)},
          {"triangles", static_cast<qint64>(mesh.Corners == 3 ? mesh.Indices.size() / 3 : 0)}});
    }
    (*record)["meshes"] = meshes;
  }
}

void TJob::_DrawFrame(int frame) {
  const TPictureNames names = NamesOf(m_Call, m_Task, frame);
  const zx_scene::TCamera& camera = m_Cameras[static_cast<std::size_t>(frame)];
  QJsonObject record = _Describe(frame);
  TClock::time_point begin = TClock::now();
  std::string error;
  if (!m_Scene.Draw(camera, &error)) {
    throw TFailure{"refused", m_File, error};
  }
  m_Scene.ReadPicture();
  const double drawTime = _Since(begin);
  record["samples"] = m_Options.Style.Samples;
  record["covered"] = static_cast<qint64>(m_Scene.CountCovered());
  record["triangles"] = static_cast<qint64>(m_Model.CountCorners(3));
  record["lines"] = static_cast<qint64>(m_Model.CountCorners(2));
  record["points"] = static_cast<qint64>(m_Model.CountCorners(1));
  record["vertices"] = static_cast<qint64>(m_Model.CountVertices());
  record["textures"] = static_cast<qint64>(m_Model.Textures.size());
  begin = TClock::now();
  _Finish(m_Scene.Picture(), names, &record);
  if (!names.Depth.empty() || !names.Normals.empty() || !names.Ids.empty()) {
    _WriteLayers(names, camera, &record);
  }
  record["seconds"] =
      QJsonObject{{"load", m_LoadTime}, {"draw", drawTime}, {"save", _Since(begin)}};
  _Send({{"frame", frame}, {"record", record}}, "picture");
}

// A picture in the place of a model is taken as it is.
void TJob::_TakePictureFile() {
  if (!m_Options.Digest && m_Options.Check.empty()) {
    throw TFailure{"refused", m_File, "is a picture: only --digest and --check take such"};
  }
  if (m_Options.Frames > 0) {
    throw TFailure{"refused", m_File, "is a picture, of which there is no turntable"};
  }
  TDataSurface picture;
  TZxMessage reason;
  if (!LoadImage(m_File, nullptr, &picture, &reason)) {
    throw TFailure{"refused", m_File, reason.what()};
  }
  if (picture.Type != DATA_TYPE_UINT8 && picture.Type != DATA_TYPE_UINT16) {
    throw TFailure{"refused", m_File, "holds floats, of which there is no digest"};
  }
  TPictureNames names = NamesOf(m_Call, m_Task, 0);
  names.Output.clear();
  names.Label = m_File;
  QJsonObject record = _Describe(0);
  _Finish(picture, names, &record);
  _Send({{"frame", 0}, {"record", record}}, "picture");
}

void TJob::Run() {
  if (_IsPicture(m_File)) {
    _TakePictureFile();
    return;
  }
  _Load();
  for (int frame = m_Task.FirstFrame; frame < m_Task.EndFrame; ++frame) {
    _DrawFrame(frame);
  }
}

} // namespace

TPictureNames NamesOf(const TCall& call, const TTask& task, int frame) {
  const TOptions& options = call.Options;
  TNameValues values;
  values.Name = StemOf(options.Models[task.Model]);
  values.Number = task.FirstNumber + static_cast<std::size_t>(frame - task.FirstFrame);
  values.Numbers = call.Pictures;
  values.Model = task.Model;
  values.Models = options.Models.size();
  values.Frame = static_cast<std::size_t>(frame);
  values.Frames = static_cast<std::size_t>(options.Frames);
  const auto fill = [&](const std::string& pattern) {
    return pattern == "-" ? pattern : FillPattern(pattern, values);
  };
  TPictureNames names = {fill(options.Output), fill(options.Depth), fill(options.Normals),
                         fill(options.Ids),    fill(options.Check), fill(options.Difference),
                         fill("{name}.png")};
  if (!names.Output.empty()) {
    names.Label = names.Output;
  }
  return names;
}

void RunTask(const TCall& call, const TTask& task, int pipe, int standardOutput) {
  TJob job(call, task, pipe, standardOutput);
  Init_ZxCore3D();
  try {
    job.Run();
  } catch (const TFailure& failure) {
    job.Fail(failure);
  } catch (const std::bad_alloc&) {
    job.Fail({"memory", job.File(), "needs more memory than there is, or --memory allows"});
  } catch (const std::exception& error) {
    job.Fail({"refused", job.File(), error.what()});
  }
  Deinit_ZxCore3D();
}
