# Completion of ficonctl for bash: the tool itself knows what may come next.
_ficonctl() {
  local words=("${COMP_WORDS[@]:1:COMP_CWORD}") current=${COMP_WORDS[COMP_CWORD]}
  mapfile -t COMPREPLY < <("${COMP_WORDS[0]}" complete -- "${words[@]}" 2>/dev/null)
  # Nothing to say about values: file names, for options that take one.
  if ((${#COMPREPLY[@]} == 0)); then
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
  fi
}
complete -F _ficonctl ficonctl
