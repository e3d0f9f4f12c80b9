# Bash completion of lumera: commands, options, and files where a command takes them.
_lumera()
{
    local cur=${COMP_WORDS[COMP_CWORD]} group= command= table= word
    local common="--archivio --json --si --oggi --help"
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        case $word in
            archivio|fatture|pnota|scadenze|tabelle|desk|oggi) [ -z "$group" ] && group=$word ;;
            crea|verifica|copia|importa|elenco|registra|esporta|mostra|elimina|genera|stampa|salva|piano-conti|controlla-date|rinumera|riscrivi|importa-scontrini|importa-saldi|dividi|bollettino|scadenzario|anzianita|estratto-conto|cruscotto)
                [ -n "$group" ] && [ -z "$command" ] && command=$word ;;
            clienti|fornitori|causali|codiva|pagamenti|mastri|conti|sottocon|sezioni|banche|centri|agenti|ditta|impostazioni)
                table=$word ;;
        esac
    done
    case ${COMP_WORDS[COMP_CWORD-1]} in
        --archivio|--xml|--p7m|--pdf|--xlsx|--csv) COMPREPLY=($(compgen -f -- "$cur")); return ;;
        --per) COMPREPLY=($(compgen -W "settimana mese" -- "$cur")); return ;;
    esac
    local words
    case "$group $command" in
        " ") words="archivio fatture pnota scadenze tabelle oggi desk --version" ;;
        "archivio ") words="crea verifica copia" ;;
        "fatture ") words="importa sincronizza elenco registra esporta esporta-tutte elimina-pdf carica-merci" ;;
        "pnota ") words="elenco mostra registra elimina stampa controlla-date rinumera riscrivi importa-scontrini" ;;
        "scadenze ") words="elenco stampa controlla-date scadenzario anzianita estratto-conto cruscotto mostra salva elimina dividi bollettino genera importa-saldi" ;;
        "tabelle ") words="elenco mostra salva elimina piano-conti" ;;
        "archivio crea") words="--postgres --demo --anno --movimenti --seme --ditta --piva --codfis --indirizzo --cap --citta --prov --naz" ;;
        "fatture elenco") words="--dal --al --da-registrare" ;;
        "fatture registra") words="--tutte --prova --causale --fornitore --nuovo-fornitore --codice-iva --data" ;;
        "fatture esporta") words="--xml --p7m --pdf" ;;
        "fatture esporta-tutte") words="--p7m --dal --al" ;;
        "fatture sincronizza") words="--cartella" ;;
        "fatture carica-merci") words="--abbina --parziale --fornitore" ;;
        "pnota elenco") words="--dal --al --sezione --causale" ;;
        "pnota controlla-date") words="--dal --al" ;;
        "pnota importa-scontrini") words="--causale" ;;
        "pnota stampa") words="--da --a --dal --al --sezione --causale --pdf --xlsx --csv" ;;
        "tabelle piano-conti") words="--da --a --pdf --xlsx --csv" ;;
        "tabelle elenco") words="--cerca --xlsx --csv" ;;
        "scadenze elenco") words="--clienti --fornitori --aperte --chiuse --dal --al --sezione --intestatario --destinazione --agente" ;;
        "scadenze stampa") words="--clienti --fornitori --aperte --chiuse --dal --al --sezione --intestatario --destinazione --agente --pdf --xlsx --csv" ;;
        "scadenze controlla-date") words="--dal --al" ;;
        "scadenze importa-saldi") words="--prova" ;;
        "scadenze scadenzario") words="--dal --al --per --clienti --fornitori --pdf --xlsx --csv" ;;
        "scadenze anzianita") words="--clienti --fornitori --al --per-scaduto --pdf --xlsx --csv" ;;
        "scadenze estratto-conto") words="--cliente --fornitore --al --dal --scadenti-al --tutte --pdf --xlsx --csv" ;;
        "scadenze cruscotto") words="--mesi --saldo --pdf --xlsx --csv" ;;
        "scadenze mostra"|"scadenze elimina") words="cliente fornitore" ;;
        "scadenze dividi") words="cliente fornitore --importo --data" ;;
        "scadenze bollettino") words="cliente fornitore --pdf" ;;
    esac
    local tables="clienti fornitori causali codiva pagamenti mastri conti sottocon sezioni banche centri agenti articoli caumag"
    if [ "$group" = tabelle ] && [ -n "$command" ] && [ -z "$table" ]; then
        case $command in
            elenco) words="$words $tables nazioni province aggregazioni" ;;
            mostra|salva) words="$tables ditta impostazioni" ;;
            elimina) words=$tables ;;
        esac
    fi
    COMPREPLY=($(compgen -W "$words $common" -- "$cur"))
    case "$group $command" in
        "archivio crea"|"archivio copia"|"fatture importa"|"pnota registra"|"pnota importa-scontrini"|"scadenze importa-saldi"|"scadenze salva")
            [[ $cur == -* ]] || COMPREPLY=($(compgen -f -- "$cur")) ;;
        "tabelle salva")
            [ -n "$table" ] && [[ $cur != -* ]] && COMPREPLY=($(compgen -f -- "$cur")) ;;
    esac
}
complete -o filenames -F _lumera lumera
