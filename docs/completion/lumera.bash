# Bash completion of lumera: commands, options, and files where a command takes them.
_lumera()
{
    local cur=${COMP_WORDS[COMP_CWORD]} group= command= word
    local common="--archivio --json --si --oggi --help"
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        case $word in
            archivio|fatture|pnota|scadenze) [ -z "$group" ] && group=$word ;;
            crea|verifica|copia|importa|elenco|registra|esporta|mostra|elimina|genera)
                [ -n "$group" ] && [ -z "$command" ] && command=$word ;;
        esac
    done
    case ${COMP_WORDS[COMP_CWORD-1]} in
        --archivio|--xml|--p7m) COMPREPLY=($(compgen -f -- "$cur")); return ;;
    esac
    local words
    case "$group $command" in
        " ") words="archivio fatture pnota scadenze --version" ;;
        "archivio ") words="crea verifica copia" ;;
        "fatture ") words="importa elenco registra esporta" ;;
        "pnota ") words="elenco mostra registra elimina" ;;
        "scadenze ") words="elenco genera" ;;
        "archivio crea") words="--postgres --demo --anno --movimenti --seme --ditta --piva --codfis --indirizzo --cap --citta --prov --naz" ;;
        "fatture elenco") words="--dal --al --da-registrare" ;;
        "fatture registra") words="--tutte --causale --fornitore --nuovo-fornitore --codice-iva --data" ;;
        "fatture esporta") words="--xml --p7m" ;;
        "pnota elenco") words="--dal --al --sezione --causale" ;;
        "scadenze elenco") words="--clienti --fornitori --aperte --chiuse --dal --al" ;;
    esac
    COMPREPLY=($(compgen -W "$words $common" -- "$cur"))
    case "$group $command" in
        "archivio crea"|"archivio copia"|"fatture importa"|"pnota registra")
            [[ $cur == -* ]] || COMPREPLY=($(compgen -f -- "$cur")) ;;
    esac
}
complete -o filenames -F _lumera lumera
