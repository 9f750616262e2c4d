#include "OptionTable.h"

namespace {

OPTION_GROUP _PictureOptions() {
  return {
      "picture",
      "The picture",
      {{'o', "output", "NAME", "@picture", true, "the picture, .png or .jpg; - is standard output",
        "Where the picture goes. The ending chooses the kind: .png, .jpg or .jpeg; any other is "
        "refused. - is standard output. In NAME, {name} stands for the model's name without "
        "directory and ending, {n} for the number of the picture in this call, {model} for that of "
        "the model and {frame} for that of the frame, all from 0 and with three digits at the "
        "least; {{ is a brace. By default {name}.png in this directory, or standard output for a "
        "model from standard input. With --check or --digest and without this option, no picture "
        "is written."},
       {'s', "size", "WxH", "", true, "size in pixels (800x600)", "Size in pixels (800x600)."},
       {kOptionSamples, "samples", "N", "1 4 16", true, "samples a pixel: 1, 4 or 16 (1)",
        "Samples a pixel: 1, 4 or 16 (1). The picture is drawn so many times as large, and the "
        "light of the samples is averaged, which makes edges smooth. It is worked out in integers: "
        "the result is the same on every system."},
       {'b', "background", "COLOR", "white black transparent", true,
        "#rgb, #rrggbb[aa], white, black, transparent",
        "Background: #rgb, #rrggbb, #rrggbbaa, white, black or transparent (#dbe0e8). With one "
        "that lets through, the picture has an alpha channel, which JPEG does not know."},
       {'w', "wire", nullptr, "", true, "draw the edges of the triangles",
        "Draw the edges of the triangles instead of their faces."},
       {'f', "filter", "KIND", "nearest linear", false, "textures: nearest or linear (linear)",
        "How textures are filtered: nearest or linear (linear)."},
       {kOptionFormat, "format", "ENDING", "png jpg dae glb gltf obj ply stl fbx 3ds", false,
        "kind of a model or picture that has no ending",
        "What an ending says where there is none: png or jpg for the picture, anything else for a "
        "model from standard input (obj, glb, stl, ...). Can be given for both. A picture to "
        "standard output is a PNG without it; a model's kind is guessed from its first bytes, "
        "which works for most but not for binary STL and X3D."}}};
}

OPTION_GROUP _ViewOptions() {
  return {
      "view",
      "Camera and light",
      {{'c', "camera", "AZ,EL|file[:NAME]", "30,20 file", true,
        "degrees round and above (30,20), or the file's own",
        "Where the camera stands, in degrees round the vertical axis and above the ground (30,20); "
        "the distance is such that the whole model is seen. Or a camera of the file, as glTF, "
        "COLLADA and FBX have them: \"file\" for the first, \"file:NAME\" for one by its name. Its "
        "vertical field of view is kept, whatever the shape of the picture."},
       {kOptionFov, "fov", "DEGREES", "", false, "field of view of the shorter side (35)",
        "Field of view of the shorter side, 1 to 150 (35)."},
       {kOptionUp, "up", "y|z|auto", "y z auto", false,
        "the model's vertical axis (auto: what its file says)",
        "The model's vertical axis. With auto, the default, it is the one that the file's metadata "
        "name, and y for files that name none."},
       {kOptionLight, "light", "AZ,EL|camera|none", "camera none", false,
        "where the light stands (camera: at its left)",
        "Where the key light stands. With camera, the default, it moves with the camera, above it "
        "on the left. With two angles as for --camera it stands still, which shows on a turntable. "
        "With none, colours and textures are drawn as they are, without light."},
       {'t', "turntable", "N", "", true, "N pictures from all round, FILE_000 and on",
        "N pictures from all round, at one distance: their numbers _000, _001, ... go before the "
        "ending unless the name has {n} or {frame}."}}};
}

OPTION_GROUP _LayerOptions() {
  return {
      "layers",
      "Depth, normals and ids",
      {{kOptionDepth, "depth", "NAME", "@picture", false,
        "depth: 16-bit PNG or PFM, in model units",
        "The depth of what is seen in the middle of each pixel: its distance before the eye along "
        "the direction of view, in the model's units. A .pfm holds it as floats, infinite where "
        "nothing is; a .png holds 16-bit multiples of --depth-step, rounded, and 0 where nothing "
        "is. Surfaces that let through more than a half are left out, here as for --normals and "
        "--ids."},
       {kOptionDepthStep, "depth-step", "UNITS", "", false, "model units a step of the depth PNG",
        "How many of the model's units one step of the depth PNG is. By default a power of ten, "
        "as fine as 65535 steps allow for the whole model and the same for all its pictures; "
        "--json and --stats say which. Depths beyond 65535 steps are "
        "written as 65535."},
       {kOptionNormals, "normals", "NAME", "@picture", false,
        "normals: 16-bit PNG or PFM, eye axes",
        "The normals of the side that is seen, in the axes of the eye: x to the right, y up, z "
        "towards the eye. A .pfm holds the components as floats; a .png holds them as 16-bit "
        "colours, (component + 1) / 2 of 65535. Where nothing is, all three are 0."},
       {kOptionIds, "ids", "NAME", "@picture", false, "one colour a mesh: PNG, listed by --json",
        "A .png with one colour a mesh, black where nothing is. --json lists the meshes with their "
        "colours. Mesh i, from 1, has the colour i of the usual palette of segmentation maps: bits "
        "0, 1 and 2 of i are the highest bits of red, green and blue, bits 3, 4 and 5 the next, "
        "and so on."}}};
}

OPTION_GROUP _CheckOptions() {
  return {
      "check",
      "The same pixels",
      {{kOptionDigest, "digest", nullptr, "", true, "print a hash of the pixels",
        "Print the SHA-256 of the pixels and the picture's name. Hashed is the picture as a binary "
        "PPM with the header \"P6\\nWIDTH HEIGHT\\n255\\n\", which pngtopnm or convert FILE ppm:- "
        "give too; as a PAM of type RGB_ALPHA if it has alpha. In place of models, pictures can be "
        "given: they are hashed as they are decoded."},
       {kOptionCheck, "check", "PICTURE", "@picture", true,
        "compare with a picture: status 0 same, 3 not",
        "Draw and compare with a picture made before, whose name may be a pattern as that of "
        "--output. Status 0 if every byte of the pixels is the same, 3 if not: then the number of "
        "differing pixels and the greatest difference of a channel are printed. In place of a "
        "model, a picture can be given."},
       {kOptionDifference, "difference", "NAME", "@picture", false,
        "with --check: the difference as a picture",
        "With --check: where the difference goes as a .png, if there is one. Black pixels are the "
        "same; the greatest difference is drawn with 255."}}};
}

OPTION_GROUP _ManyOptions() {
  return {
      "many",
      "Many models",
      {{kOptionList, "list", "FILE", "@file", false,
        "models from a file, a line each; - reads them",
        "Models from a file, a line each, behind those of the command line; - is standard input. "
        "Empty lines and such as begin with # are left out."},
       {'j', "jobs", "N", "", true, "so many processes (as many as processors)",
        "So many processes at a time, each with a context of its own (as many as there are "
        "processors)."},
       {kOptionPart, "part", "I/N", "", false, "only the I-th of N parts of the pictures",
        "Only the I-th of N parts of all the pictures, I from 1: for job arrays of a cluster. The "
        "parts follow from the command line and the list alone, differ in size by one at most and "
        "keep the numbers that {n} stands for."},
       {kOptionTimeout, "timeout", "SECONDS", "", false, "give a file up after that time (120)",
        "Give a file up after that time; 0 for never. By default 120, and as much again for each "
        "further picture of a turntable."},
       {kOptionMemory, "memory", "SIZE", "", false, "of a process, as 512M or 4G (4G)",
        "What a process may take of memory, as 512M or 4G; 0 for no limit (4G)."}}};
}

OPTION_GROUP _ReportOptions() {
  return {
      "report",
      "What is told",
      {{kOptionJson, "json", nullptr, "", true, "a line of JSON for each picture",
        "Print a line of JSON for each picture on standard output, in the order of the list; the "
        "fields stand below."},
       {kOptionStats, "stats", nullptr, "", false, "print triangles, vertices, pixels and times",
        "Print triangles, vertices, pixels and times of each model."},
       {'h', "help", "[GROUP]", "picture view layers check many report all", true,
        "or: picture view layers check many report all",
        "Print the most used options, or those of a group: picture, view, layers, check, many, "
        "report or all."},
       {'V', "version", nullptr, "", false, "print the version", "Print the version."}}};
}

} // namespace

const std::vector<OPTION_GROUP>& OptionGroups() {
  static const std::vector<OPTION_GROUP> s_Groups = {_PictureOptions(), _ViewOptions(),
                                                     _LayerOptions(),   _CheckOptions(),
                                                     _ManyOptions(),    _ReportOptions()};
  return s_Groups;
}

const OPTION_ROW* FindOption(int code) {
  for (const OPTION_GROUP& group : OptionGroups()) {
    for (const OPTION_ROW& row : group.Rows) {
      if (row.Code == code) {
        return &row;
      }
    }
  }
  return nullptr;
}
