#pragma once

/// What --help and the manual page say besides the options.

inline constexpr char kHelpHead[] =
    R"(Usage: zxrender [OPTION]... MODEL...
Renders 3D models (COLLADA, glTF, OBJ, PLY, STL and all else that Assimp reads).

)";

inline constexpr char kHelpFoot[] =
    R"(
Exit status: 0 success, 1 a file failed, 2 usage error, 3 --check found changes
)";

// See _TroffText for the marks.
inline constexpr char kManualHead[] = R"(= NAME
zxrender - render 3D models to reproducible pictures
= SYNOPSIS
zxrender [OPTION]... MODEL...
= DESCRIPTION
Renders 3D model files (COLLADA, glTF, OBJ, PLY, STL, 3DS, FBX and all else that Assimp reads) to PNG or JPEG in software. The pixels are the same on every run and on every machine.

The model - is read from standard input; see --format. A texture that can't be read only causes a warning.

Each file is read and drawn in a process of its own. If an importer crashes, loops forever or exhausts its memory, the file is reported and the others are drawn all the same.
)";

inline constexpr char kManualFoot[] = R"(= JSON
With --json, each picture has a line with an object of these fields:
- file
the model as given
- status
"drawn"; "different" if --check found a difference; "refused" if the file can't be read or holds nothing to draw; "crashed", "timeout" or "memory" if it was given up; "unwritten" if a picture could not be written
- reason
the reason in words, unless the picture was drawn
- picture, number, frame
the name of the picture, its number in this call, and the number of the turntable frame
- width, height, samples
size in pixels, and samples per pixel
- triangles, lines, points, vertices, textures
the contents of the model
- covered
the number of pixels that the model covers
- digest
as printed by --digest
- seconds
an object with the times load, draw and save
- depth, depthStep, normals, ids
names of the layers that were asked for, and model units per step of the depth PNG
- meshes
with --ids, an array with the id, color (#rrggbb), name and triangles of each mesh
- check
with --check, an object with picture and same; if not the same, also differing (pixels) and greatest (difference of a channel), or reason
= EXIT STATUS
- 0
all pictures were drawn, and with --check they are the same
- 1
a model could not be read or a picture could not be written
- 2
the command line makes no sense
- 3
a picture differs from the one given by --check
= EXAMPLES
A picture with smooth edges:
  zxrender --samples 4 -o duck.png duck.dae

All binary glTF files below a directory, with a line of JSON for each:
  find . -name '*.glb' | zxrender --list - -o 'out/{name}_{n}.png' --json

Depth, normals and mesh masks of 36 views as a data set:
  zxrender -t 36 --depth d.pfm --normals n.png --ids i.png --json duck.dae

The third of eight parts of a list, as one task of a job array:
  zxrender --list models.txt --part 3/8 -o 'out/{name}_{n}.png'

Did a change alter the picture?
  zxrender --check before.png --difference diff.png duck.dae

Through pipes:
  curl -s https://example.org/duck.glb | zxrender --format glb - -o - > duck.png
= SEE ALSO
assimp(1), bash(1)
)";
