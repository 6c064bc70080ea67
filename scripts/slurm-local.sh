#!/bin/sh
# A single-node Slurm cluster on this machine for the tests: munged, slurmctld and slurmd with their
# own key, socket, configuration, state and logs in one folder, on ports of their own, so that they
# neither need nor touch a Slurm or munge set up on the machine.
#   scripts/slurm-local.sh start DIR   starts them; prints the SLURM_CONF to use; exit 0 when the
#                                      node takes jobs, else writes DIR/skip (the reason) and exits 0
#   scripts/slurm-local.sh stop DIR    stops what start started
# Needs the Debian packages slurm-wlm and munge, and root (slurmd runs jobs as their user).
set -u
action=${1:?start or stop}
dir=${2:?folder}

stop() {
    for daemon in slurmd slurmctld munged; do
        if [ -f "$dir/$daemon.pid" ]; then
            pid=$(cat "$dir/$daemon.pid")
            kill "$pid" 2>/dev/null
            for _ in 1 2 3 4 5 6 7 8 9 10; do kill -0 "$pid" 2>/dev/null || break; sleep 0.5; done
            kill -9 "$pid" 2>/dev/null
            rm -f "$dir/$daemon.pid"
        fi
    done
    if [ -f "$dir/socket_dir" ]; then
        rm -rf "$(cat "$dir/socket_dir")"
        rm -f "$dir/socket_dir"
    fi
}

skip() {
    echo "$*" > "$dir/skip"
    echo "slurm-local: not started: $*" >&2
    stop
    exit 0
}

if [ "$action" = stop ]; then
    stop
    exit 0
fi

stop
rm -rf "$dir"
mkdir -p "$dir/state" "$dir/spool"
chmod 755 "$dir"
for program in munged slurmctld slurmd sbatch squeue; do
    command -v "$program" >/dev/null 2>&1 || [ -x "/usr/sbin/$program" ] ||
        skip "$program is missing (install the Debian packages slurm-wlm and munge)"
done
[ "$(id -u)" -eq 0 ] || skip "slurmd must run as root to start jobs"
PATH=$PATH:/usr/sbin

# munge: a key of our own. munged wants its socket's folder open to all, which a build folder under
# a home folder need not be: the socket goes to a folder of its own under /tmp.
dd if=/dev/urandom of="$dir/munge.key" bs=1024 count=1 2>/dev/null
chmod 400 "$dir/munge.key"
socket_dir=$(mktemp -d /tmp/invsetup-munge.XXXXXX) || skip "no folder for munge's socket"
chmod 755 "$socket_dir"
echo "$socket_dir" > "$dir/socket_dir"
socket="$socket_dir/munge.socket"
munged --key-file="$dir/munge.key" --socket="$socket" --pid-file="$dir/munged.pid" \
    --log-file="$dir/munged.log" --seed-file="$dir/munged.seed" || skip "munged did not start: $(tail -1 "$dir/munged.log" 2>/dev/null)"

node=$(hostname -s)
# Ports of this folder's own, so that clusters of two build folders don't meet.
port=$((20000 + $(printf '%s' "$dir" | cksum | cut -d' ' -f1) % 10000 * 2))
cpus=$(nproc)
memory=$(awk '/MemTotal/ { printf "%d", $2 / 1024 * 0.9 }' /proc/meminfo)
cat > "$dir/slurm.conf" <<CONF
ClusterName=invsetup
SlurmctldHost=$node(127.0.0.1)
SlurmUser=root
SlurmdUser=root
SlurmctldPort=$port
SlurmdPort=$((port + 1))
AuthType=auth/munge
CredType=cred/munge
AuthInfo=socket=$socket
StateSaveLocation=$dir/state
SlurmdSpoolDir=$dir/spool
SlurmctldPidFile=$dir/slurmctld.pid
SlurmdPidFile=$dir/slurmd.pid
SlurmctldLogFile=$dir/slurmctld.log
SlurmdLogFile=$dir/slurmd.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
JobCompType=jobcomp/none
SelectType=select/cons_tres
SelectTypeParameters=CR_Core_Memory
SchedulerType=sched/builtin
MpiDefault=none
ReturnToService=2
SlurmdTimeout=30
InactiveLimit=0
KillWait=5
MinJobAge=300
NodeName=$node NodeAddr=127.0.0.1 CPUs=$cpus RealMemory=$memory State=UNKNOWN
PartitionName=local Nodes=$node Default=YES MaxTime=INFINITE State=UP
CONF
export SLURM_CONF="$dir/slurm.conf"

slurmctld -i || skip "slurmctld did not start: $(tail -2 "$dir/slurmctld.log" 2>/dev/null)"
slurmd || skip "slurmd did not start: $(tail -2 "$dir/slurmd.log" 2>/dev/null)"

# Up to 60 s for the node to take jobs.
for _ in $(seq 1 120); do
    state=$(sinfo -h -N -o '%t' 2>/dev/null | head -1)
    case $state in
        idle*|mix*|alloc*) echo "SLURM_CONF=$SLURM_CONF"; exit 0 ;;
    esac
    sleep 0.5
done
skip "the node did not come up (state '${state:-none}'): $(tail -2 "$dir/slurmd.log" 2>/dev/null)"
