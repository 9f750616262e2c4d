#include "GltfNodes.h"

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QString>
#include <QtCore/QtEndian>

#include <assimp/types.h>

namespace zx_scene {

namespace {

// In the binary form the text stands behind a header of five words: mark, version, length of the
// file, length of the text, format of the text.
QByteArray _JsonText(const QByteArray& file) {
  constexpr int kHeader = 20;
  if (!file.startsWith("glTF") || file.size() < kHeader) {
    return file;
  }
  const auto version = qFromLittleEndian<quint32>(file.constData() + 4);
  const auto length = qFromLittleEndian<quint32>(file.constData() + 12);
  if (version != 1 || length > static_cast<quint32>(file.size() - kHeader)) {
    return QByteArray();
  }
  return file.mid(kHeader, static_cast<int>(length));
}

float _At(const QJsonArray& array, int index) {
  return static_cast<float>(array.at(index).toDouble());
}

aiMatrix4x4 _ToMatrix(const QJsonObject& node) {
  aiMatrix4x4 matrix;
  const QJsonArray t = node.value("translation").toArray();
  const QJsonArray r = node.value("rotation").toArray();
  const QJsonArray s = node.value("scale").toArray();
  if (t.size() == 3) {
    aiMatrix4x4 part;
    matrix *= aiMatrix4x4::Translation(aiVector3D(_At(t, 0), _At(t, 1), _At(t, 2)), part);
  }
  if (r.size() == 4) {
    matrix *= aiMatrix4x4(aiQuaternion(_At(r, 3), _At(r, 0), _At(r, 1), _At(r, 2)).GetMatrix());
  }
  if (s.size() == 3) {
    aiMatrix4x4 part;
    matrix *= aiMatrix4x4::Scaling(aiVector3D(_At(s, 0), _At(s, 1), _At(s, 2)), part);
  }
  return matrix;
}

} // namespace

std::map<std::string, aiMatrix4x4> ReadGltf1Nodes(const std::string& name) {
  std::map<std::string, aiMatrix4x4> matrices;
  const QString path = QString::fromStdString(name);
  QFile file(path);
  if ((!path.endsWith(".gltf", Qt::CaseInsensitive) &&
       !path.endsWith(".glb", Qt::CaseInsensitive)) ||
      !file.open(QIODevice::ReadOnly)) {
    return matrices;
  }
  // In version 2 the nodes are an array, of which toObject makes an empty object.
  const QJsonObject nodes =
      QJsonDocument::fromJson(_JsonText(file.readAll())).object().value("nodes").toObject();
  for (auto it = nodes.begin(); it != nodes.end(); ++it) {
    const QJsonObject node = it.value().toObject();
    if (!node.contains("matrix")) {
      matrices[it.key().toStdString()] = _ToMatrix(node);
    }
  }
  return matrices;
}

} // namespace zx_scene
