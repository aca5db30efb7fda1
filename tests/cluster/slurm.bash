# A Slurm of this machine alone: munged, slurmctld and slurmd with keys, sockets, ports and state of their own in a temporary folder,
# on loopback addresses. Sourced by run.

slurm_folder=
slurm_problem= # Why it does not run.

# FreePorts COUNT: ports of the loopback address that are free now.
FreePorts()
{
    python3 -c '
import socket, sys
sockets = [socket.socket() for _ in range(int(sys.argv[1]))]
for s in sockets:
    s.bind(("127.0.0.1", 0))
print(*(s.getsockname()[1] for s in sockets))' "$1"
}

# WaitFor SECONDS COMMAND...: until it succeeds. False when the time is over.
WaitFor()
{
    local end=$((SECONDS + $1))
    shift
    until "$@"; do
        [ "$SECONDS" -lt "$end" ] || return 1
        sleep 0.02
    done
}

# WriteSlurmConfiguration CPUS: the node has so many, whatever the machine has, so that all tasks run at a time.
WriteSlurmConfiguration()
{
    local host controller_port node_port
    host=$(hostname -s)
    read -r controller_port node_port <<< "$(FreePorts 2)"
    cat > "$slurm_folder/slurm.conf" << EOF
ClusterName=collection
SlurmctldHost=$host(127.0.0.1)
SlurmctldPort=$controller_port
SlurmdPort=$node_port
CommunicationParameters=NoCtldInAddrAny,NoInAddrAny
SlurmUser=$(id -un)
SlurmdUser=$(id -un)
AuthType=auth/munge
CredType=cred/munge
# A task that is put back waits until its credential has expired.
AuthInfo=socket=$slurm_folder/munge/socket,cred_expire=5
StateSaveLocation=$slurm_folder/state
SlurmdSpoolDir=$slurm_folder/spool
SlurmctldPidFile=$slurm_folder/slurmctld.pid
SlurmdPidFile=$slurm_folder/slurmd.pid
SlurmctldLogFile=$slurm_folder/slurmctld.log
SlurmdLogFile=$slurm_folder/slurmd.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SwitchType=switch/none
MpiDefault=none
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
SlurmdParameters=config_overrides
SchedulerType=sched/builtin
SchedulerParameters=batch_sched_delay=0,sched_interval=1
NodeName=$host NodeAddr=127.0.0.1 CPUs=$1
PartitionName=all Nodes=ALL Default=YES State=UP
EOF
}

IsMungeUp() { timeout 5 munge -n -S "$slurm_folder/munge/socket" > /dev/null 2>&1; }
IsSlurmUp() { [ "$(timeout 5 sinfo -h -o %T 2> /dev/null)" = idle ]; }

# LastErrors DAEMON: the last lines of its logs that are about errors.
LastErrors() { grep -hiE 'error|fatal|cannot|fail' "$slurm_folder/$1"*.{log,out} 2> /dev/null | tail -n 3; }

# StartSlurm CPUS: false, and the reason in slurm_problem, if it cannot run here.
StartSlurm()
{
    local program
    PATH=$PATH:/usr/sbin:/sbin
    for program in munged munge slurmctld slurmd sbatch; do
        command -v "$program" > /dev/null || {
            slurm_problem="$program is not installed"
            return 1
        }
    done
    slurm_folder=$(mktemp -d -t asf-slurm.XXXXXX)
    chmod 711 "$slurm_folder" # munged wants a folder that its clients can enter.
    mkdir -m 755 "$slurm_folder"/{munge,state,spool}
    export SLURM_CONF=$slurm_folder/slurm.conf
    WriteSlurmConfiguration "$1"

    (umask 077 && head -c 64 /dev/urandom > "$slurm_folder/munge.key")
    munged --foreground --key-file="$slurm_folder/munge.key" --socket="$slurm_folder/munge/socket" --pid-file="$slurm_folder/munge/pid" \
        --log-file="$slurm_folder/munged.log" --seed-file="$slurm_folder/munge/seed" --num-threads=2 > "$slurm_folder/munged.out" 2>&1 &
    WaitFor 10 IsMungeUp || {
        slurm_problem="munged does not answer: $(LastErrors munged)"
        return 1
    }
    slurmctld -D -c > "$slurm_folder/slurmctld.out" 2>&1 &
    slurmd -D > "$slurm_folder/slurmd.out" 2>&1 &
    WaitFor 20 IsSlurmUp || {
        slurm_problem="its node does not become idle: $(LastErrors slurm)"
        return 1
    }
}

# SlurmProcesses [VARIABLE=VALUE]: prints the processes of this Slurm, daemons and tasks, which alone have its configuration in their
# environment (those started here must not); only those that have the other variable, too.
SlurmProcesses()
(
    export -n SLURM_CONF
    grep -lszxF "SLURM_CONF=$slurm_folder/slurm.conf" /proc/[0-9]*/environ |
        { [ $# -eq 0 ] && cat || xargs -r grep -lszxF "$1"; } | cut -d / -f 3 || true
)

HasSlurmEnded() { [ -z "$(SlurmProcesses)" ]; }

# Ends all of its processes, and removes its folder.
StopSlurm()
{
    local signal processes
    [ -n "$slurm_folder" ] || return 0
    for signal in TERM KILL; do
        mapfile -t processes < <(SlurmProcesses)
        [ ${#processes[@]} -eq 0 ] || kill -"$signal" "${processes[@]}" 2> /dev/null || true
        ! WaitFor 10 HasSlurmEnded || break
    done
    HasSlurmEnded || echo "cluster: processes of Slurm are left: $(SlurmProcesses)" >&2
    rm -rf "$slurm_folder"
    slurm_folder=
}
