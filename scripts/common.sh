# Shared by scripts/run and scripts/test: saying what is done, and installing what is missing.

say()
{
	printf '\n== %s\n' "$*"
}

# The packages of packages.txt that are not installed, one a line.
missing_packages()
{
	local package
	sed -e 's/#.*//' -e 's/[[:space:]]//g' -e '/^$/d' "$root/scripts/packages.txt" | while read -r package; do
		[ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || echo "$package"
	done
}

as_root()
{
	if [ "$(id -u)" = 0 ]; then
		"$@"
	elif command -v sudo >/dev/null; then
		sudo "$@"
	else
		echo "error: installing packages needs root or sudo; install the packages listed above and try again" >&2
		return 1
	fi
}

install_packages()
{
	local missing
	missing=$(missing_packages)
	if [ -z "$missing" ]; then
		say "Packages: all of scripts/packages.txt are installed"
		return
	fi
	say "Packages: installing" $missing
	as_root apt-get update -q || return
	as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends $missing || return
	missing=$(missing_packages)
	if [ -n "$missing" ]; then
		echo "error: still not installed:" $missing >&2
		return 1
	fi
}

# Presets that compile a file alike share the result, although each builds in a folder of its own.
export CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1

# configure_and_build PRESET [TARGET...], configured with what configure_options says besides.
configure_options=()
configure_and_build()
{
	local preset=$1
	shift
	say "Build: preset $preset"
	if ! cmake --preset "$preset" ${configure_options[@]+"${configure_options[@]}"} >"$root/build/$preset.configure.log" 2>&1; then
		cat "$root/build/$preset.configure.log"
		return 1
	fi
	cmake --build --preset "$preset" ${1:+--target "$@"}
}
