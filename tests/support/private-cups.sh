#!/bin/sh
# private-cups.sh DIR: a private CUPS server, which keeps all its files in DIR and whose printers write what they get to
# DIR/out. Clients find it by CUPS_SERVER=DIR/run/cups.sock.
# The script says "ready" and runs until its standard input closes, so the server ends even when its user is killed; a
# guard ends the server when this script is killed, too.
# DIR must be readable for all users, and short: a socket's path ends at about 100 bytes.
# A shell script DIR/fault runs at the beginning of every job as the printer's side of it; there it is called $fault.
# Queues: ZD421 (Zebra), Laser (PDF printer), Frozen (Zebra, paused, and no user may resume it).
set -eu

stop() {
    kill "$pid" 2>/dev/null || return 0
    tries=0
    while kill -0 "$pid" 2>/dev/null && [ $tries -lt 100 ]; do
        tries=$((tries + 1))
        sleep 0.05
    done
    kill -9 "$pid" 2>/dev/null || :
}

# The server's programs, with a backend of ours for "usb": so a queue has a true Zebra address without a Zebra. A
# "file:" device would not do; a raw job to it completes and leaves an empty file.
make_programs() {
    mkdir -p "$dir/bin/backend"
    for kind in filter daemon driver notifier cgi-bin monitor; do
        if [ -e "/usr/lib/cups/$kind" ]; then ln -sfn "/usr/lib/cups/$kind" "$dir/bin/$kind"; fi
    done
    cat > "$dir/bin/backend/usb" <<BACKEND
#!/bin/sh
[ \$# -eq 0 ] && exit 0
fault="$dir/fault"
[ -r "\$fault" ] && . "\$fault"
if [ \$# -ge 6 ]; then cat "\$6"; else cat; fi > "$dir/out/.\$PRINTER" || exit 1
mv "$dir/out/.\$PRINTER" "$dir/out/\$PRINTER"
BACKEND
    cp "$dir/bin/backend/usb" "$dir/bin/backend/capture"
    chmod 755 "$dir/bin/backend/usb" "$dir/bin/backend/capture"
}

make_configuration() {
    mkdir -p "$dir/etc/ppd" "$dir/ssl" "$dir/spool/tmp" "$dir/run" "$dir/cache" "$dir/log" "$dir/home" "$dir/out"
    user=$(id -un)
    group=$(id -gn)
    if [ "$(id -u)" = 0 ]; then # the server's filters never run as root
        user='lp'
        group='lp'
        chown -R root:lp "$dir/spool" "$dir/run" "$dir/cache"
        chown lp:lp "$dir/out"
        chmod 710 "$dir/spool"
        chmod 1770 "$dir/spool/tmp"
    fi
    cat > "$dir/etc/cups-files.conf" <<FILES
ServerRoot $dir/etc
ServerBin $dir/bin
DataDir /usr/share/cups
DocumentRoot /usr/share/cups
RequestRoot $dir/spool
TempDir $dir/spool/tmp
StateDir $dir/run
CacheDir $dir/cache
ServerKeychain $dir/ssl
AccessLog $dir/log/access_log
ErrorLog $dir/log/error_log
PageLog $dir/log/page_log
Printcap
User $user
Group $group
SystemGroup root
Sandboxing relaxed
FILES
    cat > "$dir/etc/cupsd.conf" <<SERVER
LogLevel debug
MaxLogSize 0
Listen $dir/run/cups.sock
Browsing Off
DefaultAuthType None
WebInterface No
ErrorPolicy abort-job
<Location />
Order allow,deny
Allow all
</Location>
<Location /admin>
Order allow,deny
Allow all
</Location>
SERVER
    policy default >> "$dir/etc/cupsd.conf"
    policy noresume '<Limit Resume-Printer>' 'Require user nobody-at-all' '</Limit>' >> "$dir/etc/cupsd.conf"
}

# policy NAME LINES...: everything is allowed but what LINES take back.
policy() {
    printf '<Policy %s>\n' "$1"
    shift
    printf '%s\n' 'JobPrivateAccess all' 'JobPrivateValues none' 'SubscriptionPrivateAccess all' \
        'SubscriptionPrivateValues none' "$@" '<Limit All>' 'Order allow,deny' 'Allow all' '</Limit>' '</Policy>'
}

start() {
    umask 022 # the server's user reads the files
    make_configuration
    make_programs
    /usr/sbin/cupsd -f -c "$dir/etc/cupsd.conf" -s "$dir/etc/cups-files.conf" > "$dir/log/cupsd.out" 2>&1 &
    pid=$!
    # The guard has no parent: a test that takes too long is killed with all its descendants.
    exec 3<&0
    (trap '' HUP INT TERM; (cat; stop) <&3 >/dev/null 2>&1 &)
    exec 3<&-
    trap stop EXIT
    trap 'exit 1' HUP INT PIPE TERM
    export CUPS_SERVER="$dir/run/cups.sock" HOME="$dir/home" LC_ALL=C.UTF-8
    tries=0
    until lpstat -r 2>/dev/null | grep -q 'is running'; do
        tries=$((tries + 1))
        if [ $tries -gt 400 ]; then
            cat "$dir/log/cupsd.out" "$dir/log/error_log" >&2
            exit 1
        fi
        sleep 0.05
    done
    # With a driver on the Zebra queue, a label that is not sent raw comes out as a picture and is noticed.
    /usr/sbin/lpadmin -p ZD421 -E -v 'usb://Zebra%20Technologies/ZTC%20ZD421-203dpi%20ZPL' -m drv:///sample.drv/zebra.ppd
    /usr/sbin/lpadmin -p Laser -E -v capture:/laser -m drv:///sample.drv/generic.ppd -o PageSize=Letter
    /usr/sbin/lpadmin -p Frozen -E -v usb://Zebra/GX420d -o printer-op-policy=noresume
    /usr/sbin/cupsdisable Frozen
}

dir=$1
start
echo ready
cat > /dev/null
