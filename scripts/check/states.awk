# Prints, for each source in a compile database, its path and all that its verdict depends on: `settings`, its compile command, and the
# hashes of itself and the headers it includes, however far away. Reads, in this order: the compile database, lines "HASH PATH" of
# the files of the tree from the standard input, the files themselves. `root` is the tree's folder with a slash at its end.

FILENAME ~ /\.json$/ {
  if (/"command":/) command = $0
  if (/"file":/) {
    split($0, parts, "\"")
    commands[substr(parts[4], length(root) + 1)] = command
  }
  next
}
NF == 2 && length($1) == 64 && FILENAME !~ /\./ {
  hash[$2] = $1
  name = $2
  sub(/.*\//, "", name)
  paths[name] = paths[name] " " $2
  next
}
/^#include "/ {
  split($0, parts, "\"")
  includes[FILENAME] = includes[FILENAME] " " parts[2]
}

# Adds the file to `state`, and what it includes: every file whose path ends so.
function visit(file,    names, found, count, matches, name, i, j) {
  if (file in visited) return
  visited[file] = 1
  state = state " " hash[file]
  count = split(includes[file], names, " ")
  for (i = 1; i <= count; i++) {
    name = names[i]
    sub(/.*\//, "", name)
    matches = split(paths[name], found, " ")
    for (j = 1; j <= matches; j++) {
      if (substr("/" found[j], length(found[j]) - length(names[i]) + 1) == "/" names[i]) visit(found[j])
    }
  }
}

END {
  for (file in commands) {
    if (!(file in hash)) continue
    split("", visited)
    state = settings
    visit(file)
    print file, state, commands[file]
  }
}
