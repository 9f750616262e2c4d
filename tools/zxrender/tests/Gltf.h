#pragma once

#include <string>
#include <vector>

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>

/// Parts of glTF 2 files that are made for tests.

/// A square that faces +z, from (-1, -1) to (1, 1) times `half` about (x, y), at `z`.
struct TSquare {
  float Half = 1;
  float X = 0;
  float Y = 0;
  float Z = 0;
  std::string Material = "{}"; ///< a JSON object
};

/// A glTF 2 file of squares with texture coordinates from (0, 0) at the top left to (1, 1). `more`
/// goes into the scene's file as it is: ",\"cameras\":[...]" for instance; `nodes` are further
/// nodes, which follow those of the squares, and `roots` their numbers in the scene.
inline std::string GltfOf(const std::vector<TSquare>& squares, const std::string& more = "",
                          const std::string& nodes = "", const std::string& roots = "") {
  QStringList meshes, materials, accessors, views, nodeList, rootList;
  QByteArray buffer;
  const auto add = [&](const void* data, int size) {
    views
        << QString(R"({"buffer":0,"byteOffset":%1,"byteLength":%2})").arg(buffer.size()).arg(size);
    buffer.append(static_cast<const char*>(data), size);
  };
  const unsigned short indices[] = {0, 1, 2, 0, 2, 3};
  add(indices, sizeof indices);
  accessors << R"({"bufferView":0,"componentType":5123,"count":6,"type":"SCALAR"})";
  for (const TSquare& s : squares) {
    const float l = s.X - s.Half, r = s.X + s.Half, b = s.Y - s.Half, t = s.Y + s.Half;
    const float positions[] = {l, b, s.Z, r, b, s.Z, r, t, s.Z, l, t, s.Z};
    const float texCoords[] = {0, 1, 1, 1, 1, 0, 0, 0};
    const int view = views.size();
    add(positions, sizeof positions);
    add(texCoords, sizeof texCoords);
    accessors << QString(R"({"bufferView":%1,"componentType":5126,"count":4,"type":"VEC3",)"
                         R"("min":[%2,%3,%6],"max":[%4,%5,%6]})")
                     .arg(view)
                     .arg(l)
                     .arg(b)
                     .arg(r)
                     .arg(t)
                     .arg(s.Z)
              << QString(R"({"bufferView":%1,"componentType":5126,"count":4,"type":"VEC2"})")
                     .arg(view + 1);
    meshes << QString(R"({"name":"square%1","primitives":[{"attributes":{"POSITION":%2,)"
                      R"("TEXCOORD_0":%3},"indices":0,"material":%1}]})")
                  .arg(meshes.size())
                  .arg(view)
                  .arg(view + 1);
    nodeList << QString(R"({"mesh":%1})").arg(nodeList.size());
    rootList << QString::number(rootList.size());
    materials << QString::fromStdString(s.Material);
  }
  std::string text = R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[)";
  text += rootList.join(',').toStdString() + roots + "]}],\"nodes\":[";
  text += nodeList.join(',').toStdString() + nodes;
  text += "],\"meshes\":[" + meshes.join(',').toStdString();
  text += "],\"materials\":[" + materials.join(',').toStdString();
  text += "],\"accessors\":[" + accessors.join(',').toStdString();
  text += "],\"bufferViews\":[" + views.join(',').toStdString();
  text += QString(R"(],"buffers":[{"byteLength":%1,"uri":"data:application/octet-stream;base64,)")
              .arg(buffer.size())
              .toStdString();
  text += buffer.toBase64().toStdString();
  return text + "\"}]" + more + "}";
}
