#include "exporter/Completion.h"

#include "exporter/OptionTable.h"

namespace ko::exporter
{

namespace
{

using Kind = Option::Kind;
using Value = Option::Value;

bool isDivider(const Option &option)
{
    return qstrcmp(option.name, "--") == 0;
}

// What `compgen` is asked for the values of an option; empty when there is nothing to offer.
QByteArray bashValues(const Option &option)
{
    switch (option.kind) {
    case Kind::File:
        return "-f";
    case Kind::Folder:
        return "-d";
    case Kind::Choice:
        return "-W '" + option.choices().join(QLatin1Char(' ')).toLatin1() + '\'';
    case Kind::None:
    case Kind::Text:
        break;
    }
    return {};
}

QByteArray bashCases()
{
    QByteArray cases;
    for (const OptionGroup &group : optionGroups()) {
        for (const Option &option : group.options) {
            const QByteArray values = bashValues(option);
            if (values.isEmpty()) {
                continue;
            }
            const bool names = option.kind != Kind::Choice;
            cases += "        " + QByteArray(option.name) + ")\n";
            cases += names ? "            compopt -o filenames 2>/dev/null\n" : "";
            cases += "            mapfile -t COMPREPLY < <(compgen " + values +
                     " -- \"$value\")\n            ;;\n";
        }
    }
    return cases;
}

// Options as they are offered: with the sign that their value stands behind.
QByteArray bashOptions()
{
    QByteArray options;
    for (const OptionGroup &group : optionGroups()) {
        for (const Option &option : group.options) {
            options += isDivider(option) ? QByteArray()
                                         : ' ' + QByteArray(option.name) +
                                               (option.value == Value::Required ? "=" : "");
        }
    }
    return options.mid(1);
}

// The beginning of the help that says what the option is about, in the quotes that zsh wants.
QByteArray zshHelp(const Option &option)
{
    QByteArray text = option.help;
    for (const char *end : {"; ", ". ", ": ", " ("}) {
        const int index = text.indexOf(end);
        text = index > 0 ? text.left(index) : text;
    }
    return text.replace('\'', "'\\''").replace('[', "\\[").replace(']', "\\]");
}

QByteArray zshAction(const Option &option)
{
    switch (option.kind) {
    case Kind::File:
        return "_files";
    case Kind::Folder:
        return "_files -/";
    case Kind::Choice:
        return '(' + option.choices().join(QLatin1Char(' ')).toLatin1() + ')';
    case Kind::None:
    case Kind::Text:
        break;
    }
    return " ";
}

QByteArray zshOption(const Option &option)
{
    const QByteArray help = '[' + zshHelp(option) + ']';
    const QByteArray value =
        option.kind == Kind::Choice ? QByteArray("word") : QByteArray(option.placeholder).toLower();
    const QByteArray name = option.name;
    switch (option.value) {
    case Value::None:
        break;
    case Value::Required:
        return name + "=-" + help + ':' + value + ':' + zshAction(option);
    case Value::Optional:
        return name + "=-" + help + "::" + value + ':' + zshAction(option);
    case Value::NextArgument:
        return name + help + ':' + value + ':' + zshAction(option);
    }
    return name + help;
}

} // namespace

QByteArray bashCompletion()
{
    return R"(# Completion of korvel-image-exporter for bash.

_korvel_image_exporter()
{
    local current=${COMP_WORDS[COMP_CWORD]} option='' value='' word='' offered=()
    COMPREPLY=()
    # "=" is a word of its own, unless COMP_WORDBREAKS lacks it.
    if [[ $current == '=' ]]; then
        option=${COMP_WORDS[COMP_CWORD - 1]}
    elif ((COMP_CWORD > 1)) && [[ ${COMP_WORDS[COMP_CWORD - 1]} == '=' ]]; then
        option=${COMP_WORDS[COMP_CWORD - 2]} value=$current
    elif [[ $current == --*=* ]]; then
        option=${current%%=*} value=${current#*=}
    fi
    case $option in
)" + bashCases() +
           R"(    esac
    if [[ -n $option ]]; then
        if [[ $current == --*=* ]]; then
            COMPREPLY=("${COMPREPLY[@]/#/$option=}")
        fi
        return
    fi
    local before=" ${COMP_WORDS[*]:1:COMP_CWORD - 1} "
    if [[ $current != -* || $before == *' -- '* ]]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
        return
    fi
    for word in )" +
           bashOptions() + R"(; do
        if [[ $before != *" ${word%=}"[\ =]* ]]; then
            offered+=("$word")
        fi
    done
    mapfile -t COMPREPLY < <(compgen -W "${offered[*]}" -- "$current")
    if [[ ${#COMPREPLY[@]} -eq 1 && ${COMPREPLY[0]} == *= ]]; then
        compopt -o nospace 2>/dev/null
    fi
}

complete -F _korvel_image_exporter korvel-image-exporter
)";
}

QByteArray zshCompletion()
{
    QByteArray script = "#compdef korvel-image-exporter\n\n_arguments -S \\\n";
    for (const OptionGroup &group : optionGroups()) {
        for (const Option &option : group.options) {
            if (!isDivider(option)) {
                script += "    '" + zshOption(option) + "' \\\n";
            }
        }
    }
    return script + "    '*:picture, folder or stack:_files'\n";
}

} // namespace ko::exporter
