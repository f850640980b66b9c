# What the install scripts share; sourced by them, not run. Messages start
# with the name of the script that sources this.
me=$(basename "$0" .sh)

# The mirror answers now and then with a transient error ("Mirror sync in
# progress"); a command that still fails after the last attempt ends the
# script with its own error.
retry() {
  local attempt wait=15
  for attempt in 1 2 3 4 5; do
    "$@" && return 0
    [ "$attempt" -lt 5 ] || break
    echo "$me: '$*' failed (attempt $attempt of 5); trying again in ${wait} s" >&2
    sleep "$wait"
    wait=$((wait * 2))
  done
  echo "$me: '$*' failed 5 times; giving up" >&2
  return 1
}

# Installs those of the packages given that are not installed; as root only.
install_missing() {
  local missing=() p
  for p in "$@"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q '^install ok installed$' || missing+=("$p")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  if [ "$(id -u)" -ne 0 ]; then
    echo "$me: missing packages: ${missing[*]}; run this script as root" >&2
    exit 1
  fi
  export DEBIAN_FRONTEND=noninteractive
  retry apt-get update -qq
  retry apt-get install -y -qq --no-install-recommends "${missing[@]}"
}
