#!/bin/sh
# A PostgreSQL server of one's own for the tests.
#
#   postgres.sh start DIR   makes a cluster in DIR, starts it and prints the address for LUMERA_TEST_POSTGRES
#   postgres.sh stop DIR    stops it; DIR can be removed afterwards
#
# The server listens only on a Unix socket in DIR. It does not wait for the disk: it holds nothing worth keeping.
set -eu

usage() {
    sed -n '2,6s/^# \{0,1\}//p' "$0" >&2
    exit 2
}

[ $# -eq 2 ] || usage
action=$1
mkdir -p "$2"
dir=$(cd "$2" && pwd -P)
data=$dir/data

bin=
for candidate in /usr/lib/postgresql/*/bin /usr/local/pgsql/bin; do
    if [ -x "$candidate/initdb" ]; then bin=$candidate; fi
done
if [ -z "$bin" ] && command -v initdb >/dev/null 2>&1; then bin=$(dirname "$(command -v initdb)"); fi
if [ -z "$bin" ]; then
    echo "initdb not found: install the PostgreSQL server" >&2
    exit 1
fi

# PostgreSQL refuses to run as root.
as_server() {
    if [ "$(id -u)" -ne 0 ]; then
        "$@"
    elif command -v setpriv >/dev/null 2>&1; then
        setpriv --reuid=postgres --regid="$(id -g postgres)" --clear-groups "$@"
    else
        runuser -u postgres -- "$@"
    fi
}

start() {
    if [ ${#dir} -gt 85 ]; then
        echo "the path is too long for a Unix socket: $dir" >&2
        exit 1
    fi
    if [ "$(id -u)" -eq 0 ]; then
        id postgres >/dev/null 2>&1 || useradd --system --user-group --no-create-home --shell /usr/sbin/nologin postgres
        chown postgres "$dir"
    fi
    # The server's user may not be allowed into the caller's folder.
    cd /
    if [ ! -f "$data/PG_VERSION" ]; then
        as_server "$bin/initdb" -D "$data" -U lumera --auth=trust -E UTF8 --locale=C.UTF-8 --no-sync >"$dir/initdb.log" 2>&1 ||
            { cat "$dir/initdb.log" >&2; exit 1; }
        as_server tee -a "$data/postgresql.conf" >/dev/null <<CONF
listen_addresses = ''
unix_socket_directories = '$dir'
fsync = off
full_page_writes = off
shared_buffers = 16MB
max_connections = 60
jit = off
CONF
    fi
    as_server "$bin/pg_ctl" -D "$data" -l "$dir/server.log" -w -t 60 start >/dev/null ||
        { cat "$dir/server.log" >&2; exit 1; }
    host=$(printf '%s' "$dir" | sed 's/%/%25/g; s/ /%20/g; s/&/%26/g; s/?/%3F/g; s/#/%23/g; s/+/%2B/g')
    echo "postgresql:///postgres?host=$host&user=lumera"
}

stop() {
    cd /
    as_server "$bin/pg_ctl" -D "$data" -m fast -w stop >/dev/null
}

case $action in
start) start ;;
stop) stop ;;
*) usage ;;
esac
