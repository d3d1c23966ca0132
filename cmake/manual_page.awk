# awk -v headers=FOLDER -f manual_page.awk PAGE
#
# Prints a manual page. What the public headers already say is taken from them, at lines of the page
# that ask for it:
#
#   .\" @names HEADER        the names of NAME
#   .\" @synopsis HEADER     the declarations, under the headings of the header
#   .\" @head HEADER         the comment at the top
#   .\" @contracts HEADER    the comments of functions, records and constants, under the headings
#   .\" @sections HEADER     the sections that have a record, whose functions @contracts leaves out
#   .\" @results HEADER      the rows of result_text.h with the numbers of result.h
#
# A comment is paragraphs and lists. In a list, two blanks or more separate an item from its text,
# and the lines after it are indented.

# --- Reading a header ----------------------------------------------------------------------------

# Reads the parts of a header: kind[] is head, note, heading, constant, record, section (a record of
# one) or declaration; said[] is its comment, code[] the heading or what is declared. member[] and
# about[] are the members of all records, from first[] on.
function read_header(name,    path, line, doc, text, words) {
  parts = members = 0
  split("", first)
  path = headers "/" name
  while ((getline line < path) > 0) {
    if (line ~ /^\/\* ---- /) {
      gsub(/^\/\* -+ | -* ?\*\/$/, "", line)
      sub(/ -+$/, "", line)
      add_part("heading", "", line)
    } else if (line ~ /^\/\*/) {
      doc = comment_from(path, line)
      if (line ~ /^\/\*$/ || !parts) add_part(parts ? "note" : "head", doc, "")
    } else if (line ~ /^typedef struct .*\{$/) {
      split(line, words, " ")
      add_part(doc ~ /^Section "/ ? "section" : "record", doc, words[3])
      read_members(path)
      doc = ""
    } else if (line ~ /^#define [A-Z_0-9]+ +[^ ]/) {
      split(line, words, " ")
      if (line ~ /\/\*\*</) doc = comment_behind(path, line)
      gsub(/UINT32_C\(|\)/, "", words[3])
      if (doc != "") add_part("constant", doc, words[2] " Pq " words[3])
      doc = ""
    } else if (line ~ /^(PROREFLAX_API|static inline) /) {
      text = line
      while (text !~ /[;{]$/ && (getline line < path) > 0) text = text " " line
      add_part("declaration", doc, declared(text))
      doc = ""
    }
  }
  close(path)
  if (!parts) fail("nothing in " path)
}

function add_part(of_kind, doc, text) {
  kind[++parts] = of_kind
  said[parts] = doc
  code[parts] = text
}

function read_members(path,    line, doc) {
  first[parts] = members + 1
  while ((getline line < path) > 0 && line !~ /^}/) {
    sub(/^ +/, "", line)
    if (line ~ /^\/\*/) {
      doc = comment_from(path, line)
      continue
    }
    member[++members] = declared(substr(line, 1, index(line, ";")))
    about[members] = line ~ /\/\*\*</ ? comment_behind(path, line) : doc
  }
}

function comment_behind(path, line) {
  return comment_from(path, substr(line, index(line, "/**<")))
}

# The text of a comment, from its first line on.
function comment_from(path, line,    text, ends) {
  for (;;) {
    ends = line ~ /\*\/$/
    sub(/ *\*\/$/, "", line)
    sub(/^(\/\*\*?<?| *\*) ?/, "", line)
    text = text line "\n"
    if (ends || (getline line < path) <= 0) break
  }
  sub(/^\n+/, "", text)
  sub(/\n+$/, "", text)
  return text
}

function declared(text) {
  gsub(/PROREFLAX_API |PROREFLAX_CHECKED |static inline | *[;{]$/, "", text)
  gsub(/  +/, " ", text)
  gsub(/\* /, " *", text)
  return text
}

function name_of(text) {
  sub(/\(.*/, "", text)
  sub(/.*[ *]/, "", text)
  return text
}

# --- Text ----------------------------------------------------------------------------------------

function fail(why) {
  print "manual_page.awk: " why > "/dev/stderr"
  exit 1
}

function leading(line) {
  match(line, /^ */)
  return RLENGTH
}

function is_item(line) {
  return line ~ /^[^ ]+( [^ ]+)*  +[^ ]/
}

# A line without its first blanks, COUNT of them at most.
function dedented(line, count) {
  return substr(line, (leading(line) < count ? leading(line) : count) + 1)
}

# One line of text, in which no word is taken for a request or an escape.
function print_text(line) {
  gsub(/\\/, "\\e", line)
  gsub(/-1/, "\\-1", line)
  print (line ~ /^[.']/ ? "\\&" : "") line
}

# A paragraph: each sentence begins a line, and a function has its markup, on a line of its own.
function print_paragraph(text,    words, count, i, line) {
  if (paragraph_due) print ".Pp"
  count = split(text, words, " +")
  for (i = 1; i <= count; ++i) {
    if (words[i] ~ /^\(?[A-Za-z_][A-Za-z_0-9]*\(\)[,.:;)]*$/) {
      if (line != "") print_text(line)
      line = ""
      print_function(words[i])
      continue
    }
    if (line != "" && length(line) + 1 + length(words[i]) > 78) {
      print_text(line)
      line = ""
    }
    line = line (line == "" ? "" : " ") words[i]
    if (words[i] ~ /[.?!][)"]*$/ && words[i + 1] !~ /^[a-z]/) {
      print_text(line)
      line = ""
    }
  }
  if (line != "") print_text(line)
  paragraph_due = 1
}

# "(name()," as a line of markup.
function print_function(word,    before, after) {
  before = sub(/^\(/, "", word) ? ".Pf ( Fn " : ".Fn "
  after = substr(word, index(word, "()") + 2)
  gsub(/./, " &", after)
  print before substr(word, 1, index(word, "(") - 1) after
}

function begin_list() {
  print ".Bl -tag -width Ds"
  paragraph_due = 0
}

function end_list() {
  print ".El"
  paragraph_due = 1
}

function begin_item(text) {
  gsub(/, /, " , ", text)
  print ".It " (text ~ /^CFC_/ ? "Dv " : "") text
  paragraph_due = 0
}

# Prints paragraphs and lists. Local arrays, because an item holds such a text again.
function print_block(block,    lines, count, i, part, width, listing) {
  count = split(block, lines, "\n")
  for (i = 1; i <= count;) {
    if (is_item(lines[i])) {
      if (!listing) begin_list()
      listing = 1
      match(lines[i], /  +/)
      width = RSTART + RLENGTH - 1
      begin_item(substr(lines[i], 1, RSTART - 1))
      part = substr(lines[i], width + 1)
      while (++i <= count && leading(lines[i])) part = part "\n" dedented(lines[i], width)
      print_block(part)
      continue
    }
    if (listing) end_list()
    listing = 0
    if (lines[i] == "") {
      ++i
    } else if ((width = leading(lines[i]))) {
      part = ""
      while (i <= count && leading(lines[i])) part = part dedented(lines[i++], width) "\n"
      print_block(part)
    } else {
      part = lines[i]
      while (++i <= count && lines[i] ~ /^[^ ]/ && !is_item(lines[i])) part = part " " lines[i]
      print_paragraph(part)
    }
  }
  if (listing) end_list()
}

# A function's comment: what it does, its arguments and its results.
function print_contract(doc,    fields, count, i, name, listing) {
  gsub(/ @return/, "\n@return", doc)
  count = split(doc, fields, /(^|\n)@/)
  print_block(fields[1])
  for (i = 2; i <= count; ++i) {
    if (sub(/^param /, "", fields[i])) {
      if (!listing) begin_list()
      listing = 1
      name = fields[i]
      sub(/ .*/, "", name)
      print ".It Fa " name
      paragraph_due = 0
      print_block(unindented(substr(fields[i], length(name) + 1)))
    } else {
      if (listing) end_list()
      listing = 0
      sub(/^return[ \n]/, "", fields[i])
      print_results(fields[i])
    }
  }
  if (listing) end_list()
}

function unindented(text) {
  gsub(/\n +/, "\n", text)
  sub(/^ +/, "", text)
  return text
}

function print_results(text,    end) {
  gsub(/\n        /, "\n", text)
  end = index(text "\n", "\n")
  if (is_item(substr(text, 1, end - 1))) {
    print_paragraph("Returns:")
    print_block(text)
  } else {
    print_block("Returns " text (text ~ /\n[^\n]*  [^\n]*$|\.$/ ? "" : "."))
  }
}

# --- What a page asks for ------------------------------------------------------------------------

function is_accessor(i) {
  return said[i] ~ /^(Reads the section into \*out|Writes \*in, only read)/
}

function print_names(    i, last) {
  for (i = 1; i <= parts; ++i) if (kind[i] == "declaration") last = i
  for (i = 1; i <= last; ++i) {
    if (kind[i] == "declaration") print ".Nm " name_of(code[i]) (i == last ? "" : " ,")
  }
}

function print_synopsis(header,    i, heading) {
  print ".In proreflax/" header
  for (i = 1; i <= parts; ++i) {
    if (kind[i] == "heading") {
      heading = code[i]
    } else if (kind[i] == "declaration") {
      if (heading != "") print ".Ss " heading
      heading = ""
      print_declaration(code[i])
    }
  }
}

function print_declaration(text,    name, arguments, list, count, i) {
  name = name_of(text)
  if (text !~ /\(/) {
    print ".Vt " text " ;"
    return
  }
  arguments = substr(text, index(text, "(") + 1)
  sub(/\)$/, "", arguments)
  text = substr(text, 1, index(text, name "(") - 1)
  sub(/ $/, "", text)
  print ".Ft " text
  count = split(arguments, list, /, /)
  print ".Fo " name
  for (i = 1; i <= count; ++i) print ".Fa \"" list[i] "\""
  print ".Fc"
}

function print_contracts(    i, heading, listing) {
  for (i = 1; i <= parts; ++i) {
    if (kind[i] == "heading") heading = code[i]
    if (listing && (kind[i] == "heading" || kind[i] == "note")) {
      end_list()
      listing = 0
    }
    if (kind[i] ~ /^(head|heading|section)$/ || is_accessor(i)) continue
    if (heading != "") {
      print ".Ss " heading
      paragraph_due = 0
    }
    heading = ""
    if (kind[i] == "note") {
      print_block(said[i])
      continue
    }
    if (!listing) begin_list()
    listing = 1
    print_entry(i)
  }
  if (listing) end_list()
}

function print_entry(i,    k) {
  paragraph_due = 0
  if (kind[i] == "declaration") {
    print ".It " (code[i] ~ /\(/ ? "Fn " : "Va ") name_of(code[i])
    print_contract(said[i])
    return
  }
  print ".It " (kind[i] == "constant" ? "Dv " : "Vt ") code[i]
  print_block(said[i])
  if (kind[i] == "constant") return
  begin_list()
  for (k = first[i]; k <= members && (!(i + 1 in first) || k < first[i + 1]); ++k) {
    print ".It Fa \"" member[k] "\""
    paragraph_due = 0
    print_block(about[k])
  }
  end_list()
}

# Each section with its record, getter and setter. What the two say is the same but for the array
# rule: the exchanges, and the arrays.
function print_sections(    i, name, doc, exchanges, arrays) {
  begin_list()
  for (i = 1; i <= parts; ++i) {
    if (kind[i] != "section") continue
    name = doc = said[i]
    gsub(/^Section "|".*/, "", name)
    gsub(/\n/, " ", doc)
    sub(/^Section "[A-Z0-9_]+"\. /, "", doc)
    exchanges = arrays = said[i + 1]
    gsub(/\n/, " ", exchanges)
    gsub(/\n/, " ", arrays)
    if (!match(exchanges, /[0-9]+ exchanges?/)) fail("no exchanges of section " name)
    exchanges = substr(exchanges, RSTART, RLENGTH)
    begin_item("Qq " name)
    print ".Vt " code[i] " ,"
    print ".Fn " name_of(code[i + 1]) " ,"
    print ".Fn " name_of(code[i + 2]) " ;"
    print exchanges "."
    print_paragraph(doc)
    if (sub(/.*array rule: /, "", arrays)) {
      sub(/\..*/, "", arrays)
      print "Arrays: " arrays "."
    }
  }
  end_list()
}

# The texts are in result_text.h, the numbers in result.h.
function print_results_table(header,    path, line, name, text, words, number) {
  path = headers "/result.h"
  while ((getline line < path) > 0) {
    if (line ~ /^ +CFC_[A-Z_]+ = [0-9]+/ || line ~ /^#define CFC_[A-Z_]+ UINT32_C/) {
      sub(/^#define/, "", line)
      gsub(/ = | UINT32_C\(/, " ", line)
      split(line, words, " ")
      sub(/[,)].*/, "", words[2])
      number[words[1]] = words[2]
    }
  }
  close(path)
  path = headers "/" header
  while ((getline line < path) > 0) {
    if (line !~ /^ +ROW\(/) continue
    if (line !~ /"/) {
      getline text < path
      line = line text
    }
    name = text = line
    sub(/^ +ROW\(/, "", name)
    sub(/,.*/, "", name)
    sub(/^[^"]*"/, "", text)
    sub(/".*/, "", text)
    if (!(name in number)) fail("no number of " name)
    print ".It Dv " name " Ta " number[name] " Ta " text
  }
  close(path)
}

/^\.\\" @/ {
  paragraph_due = 0
  read_header($3)
  if ($2 == "@names") print_names()
  else if ($2 == "@synopsis") print_synopsis($3)
  else if ($2 == "@head") print_block(said[1])
  else if ($2 == "@contracts") print_contracts()
  else if ($2 == "@sections") print_sections()
  else if ($2 == "@results") print_results_table($3)
  else fail("what is " $2 " in " FILENAME)
  next
}

{ print }
