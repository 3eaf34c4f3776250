"""What the shells offer behind the programs.

    completion_test.py BUILD FOLDER SOURCE
"""
import os
import shutil
import subprocess
import sys
import unittest
from pathlib import Path

BUILD, FOLDER, SOURCE = (Path(argument).resolve() for argument in sys.argv[1:4])
ENVIRONMENT = os.environ | {"PATH": f"{BUILD}/bin:{os.environ['PATH']}", "HOME": str(FOLDER)}
LIBRARY = Path("/usr/share/bash-completion/bash_completion")

# Splits the line as readline does, which parts words at colons too, calls the function, and prints what it offers.
ASK_BASH = r"""
[ -z "$2" ] || source "$2"
source "$1"
mapfile -t COMP_WORDS < <(sed 's/\\ /\x01/g; s/:/ : /g; s/  */\n/g; s/\x01/\\ /g' <<<"$3" | sed '$ { /^$/d }')
if [[ $3 == *' ' ]]; then COMP_WORDS+=(''); fi
COMP_CWORD=$((${#COMP_WORDS[@]} - 1)) COMP_LINE=$3 COMP_POINT=${#3}
_gridkit
printf '%s\n' "${COMPREPLY[@]}"
"""

# Presses the tabulator key in a shell of its own, and prints the names that the shell collects.
ASK_ZSH = r"""
zmodload zsh/zpty
zpty shell zsh -f -i
zpty -w shell 'PS1= PS2= ; unsetopt zle_bracketed_paste 2>/dev/null; fpath=('"$1"' $fpath); autoload -Uz compinit'
zpty -w shell 'compinit -u -d '"$2"'/dump; compdef _gridkit gridkit tsx-annotation tsx-simulate'
zpty -w shell 'compadd() { builtin compadd -O collected "$@"; print -rl -- BEGIN $collected END; builtin compadd "$@" }'
zpty -w shell 'print READY'
while zpty -r shell line; do [[ $line == READY* ]] && break; done
zpty -w -n shell "$3"$'\t'
while zpty -r shell line; do
  line=${line%%[[:space:]]#}
  [[ $line == *BEGIN ]] && on=1 && continue
  [[ $line == END ]] && break
  (( on )) && print -r -- $line
done
zpty -d shell
"""


def setUpModule():
    global PRODUCT
    shutil.rmtree(FOLDER, ignore_errors=True)
    folder = FOLDER / "a product"
    folder.mkdir(parents=True)
    written = subprocess.run([BUILD / "bin/tsx-simulate", folder, "--lines", "64", "--samples", "64"],
                             check=True, capture_output=True, text=True).stdout.strip()
    PRODUCT = written.replace(" ", "\\ ")  # as it stands on a command line


def offered_by_bash(line, library=""):
    done = subprocess.run(["bash", "--norc", "-c", ASK_BASH, "bash", SOURCE / "completions/gridkit.bash", library, line],
                          capture_output=True, text=True, env=ENVIRONMENT, check=True)
    return done.stdout.split()


def offered_by_zsh(line):
    done = subprocess.run(["zsh", "-f", "-c", "setopt extendedglob\n" + ASK_ZSH, "zsh", SOURCE / "completions",
                           FOLDER, line], capture_output=True, text=True, env=ENVIRONMENT, timeout=60)
    return done.stdout.split()


class Bash(unittest.TestCase):
    def test_offers_the_verbs(self):
        self.assertLessEqual({"formats", "info", "read", "data", "locate"}, set(offered_by_bash("gridkit ")))
        self.assertEqual(["info"], offered_by_bash("gridkit in"))
        self.assertEqual(["info"], offered_by_bash("gridkit --plugins folder --debug in"))

    def test_offers_the_options_of_the_program_and_of_a_verb(self):
        self.assertLessEqual({"--plugins", "--preferences", "--debug", "--help", "-h"},
                             set(offered_by_bash("gridkit -")))
        self.assertEqual(["--window"], offered_by_bash(f"gridkit read {PRODUCT} --wi"))
        self.assertEqual([], offered_by_bash(f"gridkit info {PRODUCT} --wi"))
        self.assertLessEqual({"GTiff", "PNG"}, set(offered_by_bash("gridkit read -f ")))

    def test_offers_the_layers_of_the_product(self):
        self.assertEqual(["X_HH_MAGNITUDE_1", "X_HH_PHASE_2"], offered_by_bash(f"gridkit read {PRODUCT} "))
        self.assertEqual(["X_HH_PHASE_2"], offered_by_bash(f"gridkit read {PRODUCT} X_HH_P"))
        self.assertEqual(["X_HH_PHASE_2"],
                         offered_by_bash(f"gridkit read --window 0 0 10 10 -q -f PNG {PRODUCT} X_HH_P"))
        self.assertEqual([], offered_by_bash("gridkit read nothing.xml "))

    def test_offers_the_layers_where_one_may_be_named(self):
        self.assertEqual(["X_HH_MAGNITUDE_1", "X_HH_PHASE_2"], offered_by_bash(f"gridkit quicklook {PRODUCT} "))
        self.assertEqual([], offered_by_bash(f"gridkit quicklook {PRODUCT} pic"))

    def test_offers_what_the_other_programs_take(self):
        self.assertEqual(["check", "view", "rewrite"], offered_by_bash("tsx-annotation "))
        self.assertEqual(["--overwrite"], offered_by_bash("tsx-annotation rewrite --o"))
        self.assertEqual(["3.4", "3.5", "4.0"], offered_by_bash(f"tsx-annotation check {PRODUCT} --schema "))
        self.assertEqual(["MGD"], offered_by_bash("tsx-simulate folder --variant M"))
        self.assertEqual(["ascending", "descending"], offered_by_bash("tsx-simulate --lines 64 --pass "))
        self.assertEqual(["--size-mb"], offered_by_bash("tsx-simulate folder --si"))

    def test_leaves_files_to_the_shell(self):
        for line in ("tsx-annotation check ", "tsx-simulate ", "tsx-simulate --images-for ", "tsx-simulate --lines ",
                     "gridkit info ", "gridkit read ", "gridkit --plugins ", f"gridkit read {PRODUCT} X_HH_PHASE_2 "):
            self.assertEqual([], offered_by_bash(line), line)

    @unittest.skipUnless(LIBRARY.exists(), "bash-completion is not installed")
    def test_offers_data_whose_names_begin_with_a_colon(self):
        # What stands before the colon is on the line already: readline replaces what follows it.
        self.assertEqual([":RADAR_Generic_v2.2", ":TSX_Beta0"], offered_by_bash(f"gridkit data {PRODUCT} ", LIBRARY))
        self.assertEqual(["TSX_Beta0"], offered_by_bash(f"gridkit data {PRODUCT} :TSX", LIBRARY))


@unittest.skipUnless(shutil.which("zsh"), "zsh is not installed")
class Zsh(unittest.TestCase):
    def test_offers_the_verbs(self):
        self.assertEqual(["info"], offered_by_zsh("gridkit in"))
        self.assertLessEqual({"formats", "info", "read", "data", "locate"}, set(offered_by_zsh("gridkit ")))

    def test_offers_the_options_of_a_verb(self):
        self.assertEqual(["--window"], offered_by_zsh(f"gridkit read {PRODUCT} --wi"))
        self.assertLessEqual({"GTiff", "PNG"}, set(offered_by_zsh("gridkit read -f ")))

    def test_offers_what_the_other_programs_take(self):
        self.assertEqual(["rewrite"], offered_by_zsh("tsx-annotation re"))
        self.assertEqual(["--overwrite"], offered_by_zsh("tsx-annotation rewrite --o"))
        self.assertEqual({"3.4", "3.5", "4.0"}, set(offered_by_zsh(f"tsx-annotation check {PRODUCT} --schema ")))
        self.assertEqual(["MGD"], offered_by_zsh("tsx-simulate folder --variant M"))
        self.assertEqual(["--size-mb"], offered_by_zsh("tsx-simulate folder --si"))

    def test_offers_layers_and_data_of_the_product(self):
        self.assertEqual(["X_HH_PHASE_2"], offered_by_zsh(f"gridkit read {PRODUCT} X_HH_P"))
        self.assertEqual([":TSX_Beta0"], offered_by_zsh(f"gridkit data {PRODUCT} :TSX"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
