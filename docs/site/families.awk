# Doxygen's input filter for headers. In this project a comment holds for all declarations that follow it
# without a blank line, and the name of a group for the members that have no comment; Doxygen takes a
# comment for the first declaration alone, and a name for nothing but a heading. This repeats both in
# front of the others, on their own lines, so that line numbers stay; of several names in one declaration
# each gets it. Explicit specialisations of functions
# are left out: they are what their template says. Each file is documented as such, without which its free
# functions would be in no list.

function Trimmed(text) {
  sub(/^[ \t]+/, "", text)
  sub(/[ \t\r]+$/, "", text)
  return text
}

# The line without its trailing comment and without what stands in quotes.
function Code(text) {
  gsub(/"([^"\\]|\\.)*"/, "", text)
  gsub(/'([^'\\]|\\.)'/, "", text)
  sub(/\/\/.*$/, "", text)
  return Trimmed(text)
}

# Whether the line begins a declaration that has no comment behind it.
function IsMember(line, bare) {
  return line !~ /\/\/\/</ && bare !~ /^(class|struct|enum|namespace|friend|static_assert|\}|~|virtual ~)/ &&
         bare !~ /= delete;$/
}

# "T x, y;" as a declaration for each name.
function Separate(line, comment,    type, names, i, n, out) {
  match(line, /^[ \t]*[A-Za-z_][A-Za-z_0-9: ]* [a-z],/)
  type = substr(line, 1, RLENGTH - 2)
  n = split(substr(line, RLENGTH - 1), names, /[,;] */)
  out = ""
  for (i = 1; i <= n; ++i) {
    if (names[i] ~ /^[a-z]$/) {
      out = out (i == 1 ? "" : " /** " comment " */ ") type names[i] ";"
    }
  }
  return out
}

function Count(text, mark) { return gsub(mark, "", text) }

# The line with a comment in front of it.
function Commented(line, comment) {
  match(line, /^[ \t]*/)
  return substr(line, 1, RLENGTH) "/** " comment " */ " substr(line, RLENGTH + 1)
}

{
  line = Trimmed($0)
}

NR == 1 {
  print "/** \\file */ " $0
  next
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

line ~ /^#define GL_[A-Z0-9_]+ / {
  print $0 " /**< OpenGL's value. */"
  next
}

line ~ /^\/\// || line ~ /^#/ || line ~ /^(public|protected|private):/ {
  print
  next
}

{
  bare = Code(line)
  if (wasDoc) {
    docDepth = depth
    fresh = 1
    if (bare ~ /^(template <[^>]*> )?(class|struct|enum|namespace) /) {
      doc = ""
    }
  } else if (group != "" && doc == "" && fresh && depth == groupDepth && IsMember(line, bare)) {
    docDepth = depth
    $0 = Commented($0, group)
  } else if (doc != "" && fresh && depth == docDepth && IsMember(line, bare)) {
    $0 = Commented($0, doc)
  }
  if (wasDoc && bare ~ /^[A-Za-z_][A-Za-z_0-9: ]* [a-z](, [a-z])+;$/) {
    $0 = Separate(bare, doc)
  }
  wasDoc = 0
  print
  depth += Count(bare, "[{]") - Count(bare, "[}]")
  fresh = (depth <= docDepth || (group != "" && depth == groupDepth)) && bare ~ /[;}]$/
  if (depth < docDepth) {
    doc = ""
  }
}
