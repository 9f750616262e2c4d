#include "OptionTable.h"

namespace {

TOptionGroup _PictureOptions() {
  return {
      "picture",
      "Picture",
      {{'o', "output", "NAME", "@picture", true, "the picture, .png or .jpg; - is standard output",
        "Output file. Its ending selects the format: .png, .jpg or .jpeg; anything else is "
        "refused. - writes to standard output. NAME may contain {name}, the model's file name "
        "without directory and ending; {n}, the number of the picture in this call; {model}, "
        "the number of the model; and {frame}, the number of the turntable frame. Numbers "
        "start at 0 and have at least three digits; {{ and }} stand for braces. The default "
        "is {name}.png in the current directory, or standard output if the model comes from "
        "standard input. With --check or --digest and no --output, no picture is written."},
       {'s', "size", "WxH", "", true, "size in pixels (800x600)",
        "Size of the picture in pixels (800x600)."},
       {kOptionSamples, "samples", "N", "1 4 16", true, "samples per pixel: 1, 4 or 16 (1)",
        "Samples per pixel: 1, 4 or 16 (1). The picture is drawn that many times as large and "
        "averaged in linear light, which smooths edges. The averaging is done in integers, so "
        "the result is the same on every system."},
       {'b', "background", "COLOR", "white black transparent", true,
        "#rgb, #rrggbb[aa], white, black, transparent",
        "Background colour: #rgb, #rrggbb, #rrggbbaa, white, black or transparent (#dbe0e8). "
        "If it is not opaque, the picture gets an alpha channel, which JPEG does not have."},
       {'w', "wire", nullptr, "", true, "draw the edges of the triangles",
        "Draw the edges of the triangles instead of their faces."},
       {'f', "filter", "KIND", "nearest linear", false,
        "texture filter: nearest or linear (linear)",
        "Texture filter: nearest or linear (linear)."},
       {kOptionFormat, "format", "ENDING", "png jpg dae glb gltf obj ply stl fbx 3ds", false,
        "format of a model or picture without an ending",
        "The format where no ending tells it: png or jpg for the picture, anything else for a "
        "model from standard input (obj, glb, stl, ...). May be given once for each. Without "
        "it, a picture on standard output is a PNG, and the format of a model is guessed from "
        "its first bytes, which works for most but not for binary STL and X3D."}}};
}

TOptionGroup _ViewOptions() {
  return {"view",
          "Camera and light",
          {{'c', "camera", "AZ,EL|file[:NAME]", "30,20 file", true,
            "degrees around and above (30,20), or the file's own",
            "Position of the camera: degrees around the vertical axis and above the ground "
            "(30,20). Its distance is chosen so that the whole model is visible. Or a camera of "
            "the file, as glTF, COLLADA and FBX files may contain: \"file\" for the first, "
            "\"file:NAME\" for one by name. Its vertical field of view is kept, whatever the "
            "shape of the picture."},
           {kOptionFov, "fov", "DEGREES", "", false, "field of view of the shorter side (35)",
            "Field of view along the shorter side of the picture, 1 to 150 degrees (35)."},
           {kOptionUp, "up", "y|z|auto", "y z auto", false,
            "vertical axis of the model (auto: as its file says)",
            "Vertical axis of the model. auto, the default, takes the one that the metadata of "
            "the file name, and y if they name none."},
           {kOptionLight, "light", "AZ,EL|camera|none", "camera none", false,
            "position of the key light (camera: moves with it)",
            "Position of the key light. camera, the default, lets it move with the camera, above "
            "it to the left. Two angles as for --camera fix it in the scene, which shows on a "
            "turntable. none draws colours and textures unlit."},
           {'t', "turntable", "N", "", true, "N views all around, NAME_000 and on",
            "Draw N views from all around, at one distance. Their numbers _000, _001, ... are put "
            "before the ending of NAME unless it contains {n} or {frame}."}}};
}

TOptionGroup _LayerOptions() {
  return {
      "layers",
      "Depth, normals and ids",
      {{kOptionDepth, "depth", "NAME", "@picture", false,
        "depth: 16-bit PNG or PFM, in model units",
        "Write the depth of the surface seen through the centre of each pixel: its distance "
        "from the eye along the viewing direction, in units of the model. A .pfm holds "
        "floats, infinity where nothing is seen; a .png holds 16-bit multiples of "
        "--depth-step, rounded, and 0 where nothing is seen. Surfaces with an alpha below one "
        "half are left out, as they are for --normals and --ids."},
       {kOptionDepthStep, "depth-step", "UNITS", "", false, "model units per step of the depth PNG",
        "Model units per step of the depth PNG. The default is a power of ten, as fine as "
        "65535 steps for the whole model allow and the same for all its pictures; --json and "
        "--stats report it. Depths beyond 65535 steps are written as 65535."},
       {kOptionNormals, "normals", "NAME", "@picture", false,
        "normals: 16-bit PNG or PFM, in eye space",
        "Write the normals of the visible sides in eye space: x to the right, y up, z towards "
        "the eye. A .pfm holds the components as floats, a .png as 16-bit channels, "
        "(component + 1) / 2 of 65535. All three are 0 where nothing is seen."},
       {kOptionIds, "ids", "NAME", "@picture", false, "one colour per mesh: PNG, listed by --json",
        "Write a .png with one colour per mesh, black where nothing is seen; --json lists the "
        "meshes and their colours. Mesh i, counted from 1, has colour i of the palette that "
        "is common for segmentation masks: bits 0, 1 and 2 of i are the top bits of red, "
        "green and blue, bits 3, 4 and 5 the next ones, and so on."}}};
}

TOptionGroup _CheckOptions() {
  return {"check",
          "Reproducibility",
          {{kOptionDigest, "digest", nullptr, "", true, "print a hash of the pixels",
            "Print the SHA-256 of the pixels and the name of the picture. It is computed over the "
            "picture as a binary PPM with the header \"P6\\nWIDTH HEIGHT\\n255\\n\", as written "
            "by pngtopnm or by convert FILE ppm:-, or over a PAM of type RGB_ALPHA if the picture "
            "has alpha. Arguments that are pictures instead of models are decoded and hashed."},
           {kOptionCheck, "check", "PICTURE", "@picture", true,
            "compare with a picture: status 0 same, 3 not",
            "Draw and compare with an earlier picture; its name may contain the same placeholders "
            "as that of --output. The exit status is 0 if all pixels are identical and 3 if not; "
            "in that case the number of differing pixels and the greatest difference of a channel "
            "are printed. Arguments that are pictures instead of models are compared as they are."},
           {kOptionDifference, "difference", "NAME", "@picture", false,
            "with --check: write the difference as a picture",
            "With --check: write the difference, if there is one, to a .png. Identical pixels are "
            "black; the greatest difference is scaled to 255."}}};
}

TOptionGroup _ManyOptions() {
  return {
      "many",
      "Many models",
      {{kOptionList, "list", "FILE", "@file", false,
        "read the names of models from a file; - is stdin",
        "Read the names of further models from a file, one per line; - is standard input. "
        "Empty lines and lines that begin with # are skipped."},
       {'j', "jobs", "N", "", true, "parallel processes (one per processor)",
        "Number of processes that work in parallel, each with a context of its own (one per "
        "processor)."},
       {kOptionPart, "part", "I/N", "", false, "only part I of N of all pictures",
        "Draw only part I of N of all pictures, I counted from 1: for job arrays on a "
        "cluster. The parts depend on nothing but the command line and the list, differ in "
        "size by at most one, and keep the numbers that {n} stands for."},
       {kOptionTimeout, "timeout", "SECONDS", "", false, "give a file up after that time (120)",
        "Give a file up after this many seconds; 0 means never. The default is 120, and as "
        "much again for each further view of a turntable."},
       {kOptionMemory, "memory", "SIZE", "", false, "memory limit of a process, as 512M or 4G (4G)",
        "Memory limit of each process, such as 512M or 4G (4G); 0 means none."}}};
}

TOptionGroup _ReportOptions() {
  return {
      "report",
      "Reports",
      {{kOptionJson, "json", nullptr, "", true, "print a line of JSON for each picture",
        "Print a line of JSON for each picture to standard output, in the order of the list. "
        "See JSON below for the fields."},
       {kOptionStats, "stats", nullptr, "", false, "print triangles, vertices, pixels and times",
        "Print the triangles, vertices, pixels and times of each model."},
       {'h', "help", "[GROUP]", "picture view layers check many report all", true,
        "or: picture view layers check many report all",
        "Print the most common options, or those of a group: picture, view, layers, check, "
        "many, report or all."},
       {'V', "version", nullptr, "", false, "print the version", "Print the version."}}};
}

} // namespace

const std::vector<TOptionGroup>& OptionGroups() {
  static const std::vector<TOptionGroup> s_Groups = {_PictureOptions(), _ViewOptions(),
                                                     _LayerOptions(),   _CheckOptions(),
                                                     _ManyOptions(),    _ReportOptions()};
  return s_Groups;
}

const TOptionRow* FindOption(int code) {
  for (const TOptionGroup& group : OptionGroups()) {
    for (const TOptionRow& row : group.Rows) {
      if (row.Code == code) {
        return &row;
      }
    }
  }
  return nullptr;
}
