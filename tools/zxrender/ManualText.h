#pragma once

/// What --help and the manual page say beside the options.

inline constexpr char kHelpHead[] =
    R"(Usage: zxrender [OPTION]... MODEL...
Draws model files (COLLADA, glTF, OBJ, PLY, STL and the rest that Assimp reads).

)";

inline constexpr char kHelpFoot[] =
    R"(
Exit status: 0 done, 1 a file failed, 2 wrong command line, 3 --check differs
)";

// See _TroffText for the marks.
inline constexpr char kManualHead[] = R"(= NAME
zxrender - draw model files, the same pixels every time
= SYNOPSIS
zxrender [OPTION]... MODEL...
= DESCRIPTION
Draws model files (COLLADA, glTF, OBJ, PLY, STL, 3DS, FBX and the rest that Assimp reads) into PNG or JPEG by a software renderer whose pixels are the same on every run and every machine.

A model - is read from standard input; see --format. A texture that can't be read only warns.

Each file is read and drawn in a process of its own, so that neither a crash nor an endless loop of an importer nor its hunger for memory takes the rest along: such a file is reported, and the next one is drawn.
)";

inline constexpr char kManualFoot[] = R"(= JSON
With --json, each picture has a line with an object of these fields:
- file
the model as it was given
- status
"drawn"; "different" if --check found a difference; "refused" for a file that can't be read or holds nothing to draw; "crashed", "timeout" or "memory" for one that was given up; "unwritten" if a picture could not be written
- reason
why, in words, unless it was drawn
- picture, number, frame
the name of the picture, its number in this call, and that of the frame of a turntable
- width, height, samples
size in pixels, and samples a pixel
- triangles, lines, points, vertices, textures
what the model holds
- covered
pixels that something was drawn on
- digest
as --digest prints it
- seconds
an object: load, draw and save
- warnings
texts, if there are any
- depth, depthStep, normals, ids
names of the layers that were asked for, and model units a step of the depth PNG
- meshes
with --ids, an array: id, color as #rrggbb, name and triangles of each mesh
- check
with --check, an object: picture, same, and if not, differing (pixels) and greatest (difference of a channel), or reason
= EXIT STATUS
- 0
all pictures were drawn, and are the same where --check was given
- 1
a model could not be read or a picture not be written
- 2
the command line makes no sense
- 3
a picture differs from that of --check
= EXAMPLES
A picture with smooth edges:
  zxrender --samples 4 -o duck.png duck.dae

All glTF files below a directory, with a line of JSON each:
  find . -name '*.glb' | zxrender --list - -o 'out/{name}_{n}.png' --json

Depth, normals and mesh colours of 36 views as a data set:
  zxrender -t 36 --depth d.pfm --normals n.png --ids i.png --json duck.dae

The third of eight parts of a list, as a task of a job array:
  zxrender --list models.txt --part 3/8 -o 'out/{name}_{n}.png'

Whether a change altered the picture:
  zxrender --check before.png --difference diff.png duck.dae

Through pipes:
  curl -s https://example.org/duck.glb | zxrender --format glb - -o - > duck.png
= SEE ALSO
assimp(1), bash(1)
)";
