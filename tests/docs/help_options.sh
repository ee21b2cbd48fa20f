# Sourced by the docs tests: the options `mrp <command> --help` lists.

# Prints the options of the help text on stdin, long and short forms, one per
# line: the first word of each line of its "Options:" section ("-h,--help"
# gives -h and --help; "--control PATH=..." gives --control).
help_options() {
  awk '/^Options:/ { in_options = 1; next }
       /^[^ ]/ { in_options = 0 }
       in_options && /^  -/ { print $1 }' | sed 's/=.*//' | tr ',' '\n'
}

# The commands whose options are documented and completed; "" is mrp itself.
# shellcheck disable=SC2034 # used by the tests that source this
MRP_COMMANDS=("" decode sim replay agent ctl)
