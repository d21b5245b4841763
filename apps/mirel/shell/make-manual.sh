#!/usr/bin/env bash
# Prints the manual page of mirel, made by help2man from the program's own help, a section for each subcommand.
#
#   make-manual.sh MIREL VERSION
set -euo pipefail
mirel=$1 version=$2

# page [SUBCOMMAND]: the page of one help text, with each example on a line of its own.
page() {
  help2man --no-info --version-string="$version" --name="algorithms for structure from motion" \
    --help-option="${1:-} --help" "$mirel" |
    sed -e 's/^\.SS "\(.*\):"$/.SS "\1"/' -e 's/^\\fB\\-h\\fR,\\-\\-help$/\\fB\\-h\\fR, \\fB\\-\\-help\\fR/' \
      -e '/^\.SH EXAMPLES/,$ { s/^\.IP$/.PP\n.nf/; $ a .fi
      }'
}

# The same as a section of another page.
section() {
  echo ".SH \"MIREL ${1^^}\""
  page "$1" | sed -n '/^\.SH SYNOPSIS/,$p' |
    sed -e '/^\.SH SYNOPSIS/d' -e 's/^\.SH DESCRIPTION/.PP/' -e 's/^\.SH \(.*\)/.SS "\L\u\1"/'
}

page
for command in $("$mirel" --help | awk '/^Subcommands:/ { list = 1; next } /^$/ { list = 0 } list { print $1 }'); do
  section "$command"
done
cat <<'END'
.SH "SEE ALSO"
The pages of share/doc/mirel/docs, in Markdown: guides, conventions, settings, formats of files (docs/NAME.md above).
END
