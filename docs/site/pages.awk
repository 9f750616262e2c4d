# A page of docs/ as Doxygen 1.9.4 understands it: headings get the anchors that other pages link to, links
# to what is no page become names, and comments go.
#
#   awk -v page=NAME -f pages.awk NAME.md          NAME without its ending

function Anchor(text) {
  gsub(/`/, "", text)
  text = tolower(text)
  gsub(/[^a-z0-9 _-]/, "", text)
  gsub(/ /, "-", text)
  return text
}

# Links within the line, from left to right.
function Linked(line,    out, at, text, target, name, anchor, hash) {
  out = ""
  while (match(line, /\[[^][]*\]\([^() ]*\)/)) {
    at = RSTART > 1 && substr(line, RSTART - 1, 1) == "!"
    out = out substr(line, 1, RSTART - 1)
    text = substr(line, RSTART + 1, index(substr(line, RSTART), "](") - 2)
    target = substr(line, RSTART + length(text) + 3, RLENGTH - length(text) - 4)
    line = substr(line, RSTART + RLENGTH)
    if (at) {
      sub(/^.*\//, "", target)
      out = out "[" text "](" prefix target ")"
      continue
    }
    hash = index(target, "#")
    anchor = hash ? substr(target, hash + 1) : ""
    name = hash ? substr(target, 1, hash - 1) : target
    sub(/^docs\//, "", name)
    sub(/\.md$/, "", name)
    if (target ~ /^https?:/) {
      out = out "[" text "](" target ")"
    } else if (name == "") {
      out = out "[" text "](@ref " page "-" anchor ")"
    } else if (target ~ /\.md(#|$)/ && index(pages, " " name " ")) {
      out = out "[" text "](@ref " name (anchor == "" ? "" : "-" anchor) ")"
    } else {
      out = out text
    }
  }
  return out line
}

/^```/ {
  fenced = !fenced
  print
  next
}

fenced {
  print
  next
}

/^<!-- / { next }

/^    / {
  print
  next
}

/^#+ / {
  level = index($0, " ") - 1
  title = substr($0, level + 2)
  print substr($0, 1, level + 1) title " {#" (level == 1 ? page : page "-" Anchor(title)) "}"
  next
}

{ print Linked($0) }
