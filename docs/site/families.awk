# Doxygen's input filter for headers. In this project a comment holds for all declarations that follow it
# without a blank line, and the name of a group for the members that have no comment; Doxygen takes a
# comment for the first declaration alone, and a name for nothing but a heading. This repeats both in
# front of the others, on their own lines, so that line numbers stay. Explicit specialisations of functions
# are left out: they are what their template says.

function trimmed(text) {
  sub(/^[ \t]+/, "", text)
  sub(/[ \t\r]+$/, "", text)
  return text
}

# The line without its trailing comment and without what stands in quotes.
function code(text) {
  gsub(/"([^"\\]|\\.)*"/, "", text)
  gsub(/'([^'\\]|\\.)'/, "", text)
  sub(/\/\/.*$/, "", text)
  return trimmed(text)
}

# Whether the line begins a declaration that has no comment behind it.
function IsMember(line, bare) {
  return line !~ /\/\/\/</ && bare !~ /^(class|struct|enum|namespace|friend|static_assert|\})/
}

function count(text, mark) { return gsub(mark, "", text) }

{
  line = trimmed($0)
}

line ~ /^template <> / || line == "template <>" { special = 1 }
special {
  special = line !~ /;$/
  print ""
  next
}

line == "" {
  doc = ""
  wasDoc = 0
  print
  next
}

line ~ /^\/\/\/($|[^<])/ {
  text = line
  sub(/^\/\/\/[ \t]?/, "", text)
  if (text ~ /^[\\@]name /) {
    sub(/^[\\@]name /, "", text)
    title = text
    naming = 1
    doc = ""
    wasDoc = 0
  } else if (text ~ /^[\\@]\{/) {
    group = title
    groupDepth = depth
    naming = wasDoc = 0
    fresh = 1
  } else if (text ~ /^[\\@]\}/) {
    group = doc = ""
    wasDoc = 0
  } else if (naming) {
    title = title " " text
  } else {
    doc = wasDoc ? doc " " (text == "" ? "\\n\\n" : text) : text
    wasDoc = 1
  }
  print
  next
}

line ~ /^\/\// || line ~ /^#/ || line ~ /^(public|protected|private):/ {
  print
  next
}

{
  bare = code(line)
  if (wasDoc) {
    docDepth = depth
    fresh = 1
    if (bare ~ /^(template <[^>]*> )?(class|struct|enum|namespace) /) {
      doc = ""
    }
  } else if (group != "" && doc == "" && fresh && depth == groupDepth && IsMember(line, bare)) {
    docDepth = depth
    sub(/^[ \t]*/, "&/** " group " */ ", $0)
  } else if (doc != "" && fresh && depth == docDepth && IsMember(line, bare)) {
    sub(/^[ \t]*/, "&/** " doc " */ ", $0)
  }
  wasDoc = 0
  print
  depth += count(bare, /\{/) - count(bare, /\}/)
  fresh = (depth <= docDepth || (group != "" && depth == groupDepth)) && bare ~ /[;}]$/
  if (depth < docDepth) {
    doc = ""
  }
}
